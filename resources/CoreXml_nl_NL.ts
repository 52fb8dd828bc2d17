<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="nl_NL" sourcelanguage="en_US">
<context>
    <name>IDS_ERR_XML_ENTITY</name>
    <message>
        <source>XML External &lt;!ENTITY&gt; definitions are not allowed.</source>
        <translation>Externe &lt;!ENTITY&gt;-definities worden niet toegestaan in XML.</translation>
    </message>
</context>
<context>
    <name>IDS_ERR_XML_INVALID_ENCODING</name>
    <message>
        <source>The XML file is in an unsupported encoding.</source>
        <translation>De codering van het XML-bestand wordt niet ondersteund.</translation>
    </message>
</context>
</TS>

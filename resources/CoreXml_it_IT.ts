<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="it_IT" sourcelanguage="en_US">
<context>
    <name>IDS_ERR_XML_ENTITY</name>
    <message>
        <source>XML External &lt;!ENTITY&gt; definitions are not allowed.</source>
        <translation>In XML non sono ammesse definizioni &lt;!ENTITY&gt; esterne.</translation>
    </message>
</context>
<context>
    <name>IDS_ERR_XML_INVALID_ENCODING</name>
    <message>
        <source>The XML file is in an unsupported encoding.</source>
        <translation>La codifica del file XML non è supportata.</translation>
    </message>
</context>
</TS>

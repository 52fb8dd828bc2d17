<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="pt_BR" sourcelanguage="en_US">
<context>
    <name>IDS_ERR_XML_ENTITY</name>
    <message>
        <source>XML External &lt;!ENTITY&gt; definitions are not allowed.</source>
        <translation>As definições externas de &lt;!ENTITY&gt; em XML não são permitidas.</translation>
    </message>
</context>
<context>
    <name>IDS_ERR_XML_INVALID_ENCODING</name>
    <message>
        <source>The XML file is in an unsupported encoding.</source>
        <translation>A codificação do arquivo XML não é suportada.</translation>
    </message>
</context>
</TS>

<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="es_ES" sourcelanguage="en_US">
<context>
    <name>IDS_ERR_XML_ENTITY</name>
    <message>
        <source>XML External &lt;!ENTITY&gt; definitions are not allowed.</source>
        <translation>No se permiten definiciones externas de &lt;!ENTITY&gt; en XML.</translation>
    </message>
</context>
<context>
    <name>IDS_ERR_XML_INVALID_ENCODING</name>
    <message>
        <source>The XML file is in an unsupported encoding.</source>
        <translation>La codificación del archivo XML no es compatible.</translation>
    </message>
</context>
</TS>

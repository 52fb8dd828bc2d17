<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ja_JP" sourcelanguage="en_US">
<context>
    <name>IDS_ERR_XML_ENTITY</name>
    <message>
        <source>XML External &lt;!ENTITY&gt; definitions are not allowed.</source>
        <translation>XML の外部 &lt;!ENTITY&gt; 定義は許可されていません。</translation>
    </message>
</context>
<context>
    <name>IDS_ERR_XML_INVALID_ENCODING</name>
    <message>
        <source>The XML file is in an unsupported encoding.</source>
        <translation>XML ファイルのエンコードに対応していません。</translation>
    </message>
</context>
</TS>

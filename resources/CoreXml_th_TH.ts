<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="th_TH" sourcelanguage="en_US">
<context>
    <name>IDS_ERR_XML_ENTITY</name>
    <message>
        <source>XML External &lt;!ENTITY&gt; definitions are not allowed.</source>
        <translation>ไม่อนุญาตให้ใช้คำจำกัดความ &lt;!ENTITY&gt; ภายนอกใน XML</translation>
    </message>
</context>
<context>
    <name>IDS_ERR_XML_INVALID_ENCODING</name>
    <message>
        <source>The XML file is in an unsupported encoding.</source>
        <translation>ไฟล์ XML นี้ใช้การเข้ารหัสที่ไม่รองรับ</translation>
    </message>
</context>
</TS>

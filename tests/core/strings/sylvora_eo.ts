<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="eo" sourcelanguage="en">
<context>
    <name>Misc</name>
    <message>
        <source>Untitled SaveAs Filename</source>
        <translation>Sentitola</translation>
    </message>
</context>
</TS>

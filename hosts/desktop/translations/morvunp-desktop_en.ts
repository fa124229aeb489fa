<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name>desktop::MainWindow</name>
    <message numerus="yes">
        <source>%n item(s) selected, %1 bytes in files</source>
        <translation>
            <numerusform>%n item selected, %1 bytes in files</numerusform>
            <numerusform>%n items selected, %1 bytes in files</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n selected item(s)</source>
        <translation>
            <numerusform>%n selected item</numerusform>
            <numerusform>%n selected items</numerusform>
        </translation>
    </message>
</context>
</TS>

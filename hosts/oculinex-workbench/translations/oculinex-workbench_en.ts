<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US" sourcelanguage="en_US">
<context>
    <name>StorePane</name>
    <message numerus="yes">
        <source>%n point(s)</source>
        <translation>
            <numerusform>%n point</numerusform>
            <numerusform>%n points</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n line(s)</source>
        <translation>
            <numerusform>%n line</numerusform>
            <numerusform>%n lines</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n polygon(s)</source>
        <translation>
            <numerusform>%n polygon</numerusform>
            <numerusform>%n polygons</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n area(s)</source>
        <translation>
            <numerusform>%n area</numerusform>
            <numerusform>%n areas</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n text(s)</source>
        <translation>
            <numerusform>%n text</numerusform>
            <numerusform>%n texts</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n integer(s)</source>
        <translation>
            <numerusform>%n integer</numerusform>
            <numerusform>%n integers</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n number(s)</source>
        <translation>
            <numerusform>%n number</numerusform>
            <numerusform>%n numbers</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n truth value(s)</source>
        <translation>
            <numerusform>%n truth value</numerusform>
            <numerusform>%n truth values</numerusform>
        </translation>
    </message>
</context>
</TS>

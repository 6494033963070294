<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en">
<context>
    <name>CleanCommand</name>
    <message numerus="yes">
        <source>warning: %n item(s) left as they were; the first: %1</source>
        <translation>
            <numerusform>warning: %n item was left as it was; the first: %1</numerusform>
            <numerusform>warning: %n items were left as they were; the first: %1</numerusform>
        </translation>
    </message>
</context>
</TS>

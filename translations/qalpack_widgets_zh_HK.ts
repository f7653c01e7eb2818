<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_HK">
<context>
    <name>OpenCloseSelect</name>
    <message>
        <location filename="../qalpack/controls/OpenCloseSelect.h" line="15"/>
        <source>Not Specify</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../qalpack/controls/OpenCloseSelect.h" line="16"/>
        <source>Open</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../qalpack/controls/OpenCloseSelect.h" line="17"/>
        <source>Close</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PrincipalSelect</name>
    <message>
        <location filename="../qalpack/controls/PrincipalSelect.h" line="15"/>
        <source>Not Specify</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../qalpack/controls/PrincipalSelect.h" line="17"/>
        <source>Client</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../qalpack/controls/PrincipalSelect.h" line="18"/>
        <source>House</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../qalpack/controls/PrincipalSelect.h" line="19"/>
        <source>RT</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>

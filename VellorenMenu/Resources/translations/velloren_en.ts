<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
  <context>
    <name>Bundle</name>
    <message>
      <source>Support subject line</source>
      <comment>support</comment>
      <extracomment>The subject of a mail to support; the product's name and version stand before it.</extracomment>
      <translation>Support request</translation>
    </message>
  </context>
</TS>

<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr" sourcelanguage="en">
  <context>
    <name>Bundle</name>
    <message>
      <source>Support subject line</source>
      <comment>support</comment>
      <extracomment>The subject of a mail to support; the product's name and version stand before it.</extracomment>
      <translation>Demande d’assistance</translation>
    </message>
  </context>
</TS>

// The model of a small library, as an XDM document.
#ifndef KVXDM_TESTS_LIBRARY_MODEL_H
#define KVXDM_TESTS_LIBRARY_MODEL_H

inline constexpr char libraryModel[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<xdm version="1.0">
  <element name="library" occurs="1">
    <namespace prefix="m" uri="urn:meta"/>
    <namespace prefix="" uri="urn:unused"/>
    <attribute name="owner"/>
    <attribute name="lang" prefix="m" uri="urn:meta"/>
    <element name="book" occurs="-1" decides="true">
      <attribute name="isbn"/>
      <element name="title" occurs="1"/>
      <element name="price" prefix="m" uri="urn:meta" occurs="2"/>
    </element>
    <element name="address" occurs="1"/>
  </element>
</xdm>
)";

#endif

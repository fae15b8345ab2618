// Real documents from Debian packages, and the rows of them that a reader without maps and queries finds: the packages
// are unicode-cldr-core, php-symfony-validator and mobile-broadband-provider-info.
#ifndef KVXDM_TESTS_SAMPLE_ROWS_H
#define KVXDM_TESTS_SAMPLE_ROWS_H

#include <pugixml.hpp>
#include <string>
#include <string_view>

#include "xquery.h"

namespace sample {

inline constexpr const char* windowsZones = "/usr/share/unicode/cldr/common/supplemental/windowsZones.xml";
inline constexpr const char* validators =
    "/usr/share/php/Symfony/Component/Validator/Resources/translations/validators.ja.xlf";
inline constexpr const char* serviceProviders = "/usr/share/mobile-broadband-provider-info/serviceproviders.xml";

inline std::string normalized(std::string_view text) {
  std::string words;
  bool pending = false;
  for (char c : text) {
    const bool isSpace = c == ' ' || c == '\t' || c == '\n' || c == '\r';
    if (!isSpace && pending && !words.empty()) words += ' ';
    if (!isSpace) words += c;
    pending = isSpace;
  }
  return words;
}

/** The element's own text, without that of its children, with white space normalised. */
inline std::string text(pugi::xml_node element) {
  std::string own;
  for (pugi::xml_node child : element.children()) own += child.type() == pugi::node_element ? "" : child.value();
  return normalized(own);
}

inline std::string attribute(pugi::xml_node element, const char* name) { return element.attribute(name).value(); }

/** The text of the child `name` that has, or has not, the attribute "xml:lang". */
inline std::string name(pugi::xml_node parent, bool hasLanguage) {
  for (pugi::xml_node child : parent.children("name")) {
    if (child.attribute("xml:lang").empty() != hasLanguage) return text(child);
  }
  return {};
}

inline pugi::xml_node child(pugi::xml_node parent, const char* name, int number) {
  for (pugi::xml_node each : parent.children(name)) {
    if (--number == 0) return each;
  }
  return {};
}

/** The rows of each table of the maps in tests/maps, from the root element of its document. */
inline Rows zones(pugi::xml_node data) {
  Rows rows;
  pugi::xml_node zones = data.child("windowsZones").child("mapTimezones");
  for (pugi::xml_node zone : zones.children("mapZone")) {
    rows.push_back({{"type_version", attribute(zones, "typeVersion")},
                    {"cldr_revision", attribute(data.child("version"), "number")},
                    {"windows", attribute(zone, "other")},
                    {"territory", attribute(zone, "territory")},
                    {"tzid", attribute(zone, "type")}});
  }
  return rows;
}

inline Rows releases(pugi::xml_node data) {
  pugi::xml_node zones = data.child("windowsZones").child("mapTimezones");
  return {{{"other_version", attribute(zones, "otherVersion")}, {"type_version", attribute(zones, "typeVersion")}}};
}

inline Rows units(pugi::xml_node xliff) {
  Rows rows;
  pugi::xml_node file = xliff.child("file");
  for (pugi::xml_node unit : file.child("body").children("trans-unit")) {
    rows.push_back({{"source_lang", attribute(file, "source-language")},
                    {"target_lang", attribute(file, "target-language")},
                    {"original", attribute(file, "original")},
                    {"id", attribute(unit, "id")},
                    {"resname", attribute(unit, "resname")},
                    {"source", text(unit.child("source"))},
                    {"target", text(unit.child("target"))},
                    {"state", attribute(unit.child("target"), "state")}});
  }
  return rows;
}

inline Rows countries(pugi::xml_node providers) {
  Rows rows;
  for (pugi::xml_node country : providers.children("country")) {
    rows.push_back({{"code", attribute(country, "code")}, {"name", text(country.child("name"))}});
  }
  return rows;
}

template <class Visit>
void forEachProvider(pugi::xml_node providers, Visit visit) {
  for (pugi::xml_node country : providers.children("country")) {
    for (pugi::xml_node provider : country.children("provider")) visit(country, provider);
  }
}

inline Rows providers(pugi::xml_node root) {
  Rows rows;
  forEachProvider(root, [&](pugi::xml_node country, pugi::xml_node provider) {
    rows.push_back({{"country", attribute(country, "code")},
                    {"country_name", text(country.child("name"))},
                    {"name", name(provider, false)},
                    {"name_local", name(provider, true)},
                    {"primary", attribute(provider, "primary")}});
  });
  return rows;
}

inline Row accessPoint(pugi::xml_node country, pugi::xml_node provider, pugi::xml_node apn) {
  return {{"country", attribute(country, "code")},
          {"provider", name(provider, false)},
          {"apn", attribute(apn, "value")},
          {"label", name(apn, false)},
          {"plan1", attribute(child(apn, "plan", 1), "type")},
          {"plan2", attribute(child(apn, "plan", 2), "type")},
          {"usage", attribute(apn.child("usage"), "type")},
          {"username", text(apn.child("username"))},
          {"password", text(apn.child("password"))},
          {"dns1", text(child(apn, "dns", 1))},
          {"dns2", text(child(apn, "dns", 2))},
          {"mmsc", text(apn.child("mmsc"))},
          {"mmsproxy", text(apn.child("mmsproxy"))},
          {"auth", attribute(apn.child("authentication"), "method")}};
}

inline Rows accessPoints(pugi::xml_node root) {
  Rows rows;
  forEachProvider(root, [&](pugi::xml_node country, pugi::xml_node provider) {
    for (pugi::xml_node gsm : provider.children("gsm")) {
      for (pugi::xml_node apn : gsm.children("apn")) rows.push_back(accessPoint(country, provider, apn));
    }
  });
  return rows;
}

inline Rows networks(pugi::xml_node root) {
  Rows rows;
  forEachProvider(root, [&](pugi::xml_node, pugi::xml_node provider) {
    for (pugi::xml_node gsm : provider.children("gsm")) {
      for (pugi::xml_node id : gsm.children("network-id")) {
        rows.push_back(
            {{"provider", name(provider, false)}, {"mcc", attribute(id, "mcc")}, {"mnc", attribute(id, "mnc")}});
      }
    }
  });
  return rows;
}

}  // namespace sample

#endif

// The functions that rows-to-XML queries declare, as literal texts to compare with.
#ifndef KVXDM_TESTS_FROM_ROWS_LIBRARY_H
#define KVXDM_TESTS_FROM_ROWS_LIBRARY_H

#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

struct LibraryText {
  std::string_view name;  // with the number of arguments where several functions share it
  int request;
  std::size_t length;
  std::string_view text;
};

inline std::ostream& operator<<(std::ostream& stream, const LibraryText& function) { return stream << function.name; }

/** In the order in which queries declare them. */
inline const std::vector<LibraryText>& libraryTexts() {
  static const std::vector<LibraryText> texts = {
      {"gt", 0x8000, 116,
       "\n\ndeclare function local:gt(\n"
       "   $element as element()*)\n"
       "   as xs:string\n"
       "{\n"
       "   fn:string-join($element/text(), \"\")\n"
       "};\n"},
      {"e2e_na", 0x4000, 219,
       "\n\ndeclare function local:e2e_na(\n"
       "   $name  as xs:string,\n"
       "   $attrs as attribute()*)\n"
       "   as element()?\n"
       "{\n"
       "   if ($attrs) then\n"
       "      (\n"
       "      element {$name}\n"
       "         {\n"
       "         $attrs\n"
       "         }\n"
       "      )\n"
       "   else\n"
       "      ()\n"
       "};\n"},
      {"e2e/2", 0xA000, 247,
       "\n\ndeclare function local:e2e(\n"
       "   $name    as xs:string,\n"
       "   $element as element()*)\n"
       "   as element()?\n"
       "{\n"
       "   if ($element/text()) then\n"
       "      (\n"
       "      element {$name}\n"
       "         {\n"
       "         text{ local:gt($element) }\n"
       "         }\n"
       "      )\n"
       "   else\n"
       "      ()\n"
       "};\n"},
      {"e2e/3", 0x9000, 391,
       "\n\ndeclare function local:e2e(\n"
       "   $name    as xs:string,\n"
       "   $element as element()*,\n"
       "   $attrs   as attribute()*)\n"
       "   as element()?\n"
       "{\n"
       "   if ($element/text() or $attrs) then\n"
       "      (\n"
       "      element {$name}\n"
       "         {\n"
       "         $attrs,\n"
       "         if ($element) then\n"
       "            (\n"
       "            text{ local:gt($element) }\n"
       "            )\n"
       "         else\n"
       "            ()\n"
       "         }\n"
       "      )\n"
       "   else\n"
       "      ()\n"
       "};\n"},
      {"e2ec_nac", 0x0800, 327,
       "\n\ndeclare function local:e2ec_nac(\n"
       "   $name     as xs:string,\n"
       "   $attrs    as attribute()*,\n"
       "   $children as element()*)\n"
       "   as element()?\n"
       "{\n"
       "   if ($children or $attrs) then\n"
       "      (\n"
       "      element {$name}\n"
       "         {\n"
       "         $attrs,\n"
       "         for $child in $children\n"
       "         return ($child)\n"
       "         }\n"
       "      )\n"
       "   else\n"
       "      ()\n"
       "};\n"},
      {"e2ec/2", 0x0400, 266,
       "\n\ndeclare function local:e2ec(\n"
       "   $name     as xs:string,\n"
       "   $children as element()*)\n"
       "   as element()?\n"
       "{\n"
       "   if ($children) then\n"
       "      (\n"
       "      element {$name}\n"
       "         {\n"
       "         for $child in $children\n"
       "         return ($child)\n"
       "         }\n"
       "      )\n"
       "   else\n"
       "      ()\n"
       "};\n"},
      {"e2ec/4", 0x8200, 467,
       "\n\ndeclare function local:e2ec(\n"
       "   $name     as xs:string,\n"
       "   $element  as element()*,\n"
       "   $attrs    as attribute()*,\n"
       "   $children as element()*)\n"
       "   as element()?\n"
       "{\n"
       "   if ($element/text() or $children or $attrs) then\n"
       "      (\n"
       "      element {$name}\n"
       "         {\n"
       "         $attrs,\n"
       "         if ($element) then\n"
       "            text{ local:gt($element) }\n"
       "         else\n"
       "            (),\n"
       "         for $child in $children\n"
       "         return ($child)\n"
       "         }\n"
       "      )\n"
       "   else\n"
       "      ()\n"
       "};\n"},
      {"e2ec/3", 0x8100, 438,
       "\n\ndeclare function local:e2ec(\n"
       "   $name     as xs:string,\n"
       "   $element  as element()*,\n"
       "   $children as element()*)\n"
       "   as element()?\n"
       "{\n"
       "   if ($element/text() or $children) then\n"
       "      (\n"
       "      element {$name}\n"
       "         {\n"
       "         if ($element) then\n"
       "            (\n"
       "            text{ local:gt($element) }\n"
       "            )\n"
       "         else\n"
       "            (),\n"
       "         for $child in $children\n"
       "         return ($child)\n"
       "         }\n"
       "      )\n"
       "   else\n"
       "      ()\n"
       "};\n"},
      {"et2ec/4", 0x0080, 433,
       "\n\ndeclare function local:et2ec(\n"
       "   $name     as xs:string,\n"
       "   $text     as text()*,\n"
       "   $attrs    as attribute()*,\n"
       "   $children as element()*)\n"
       "   as element()?\n"
       "{\n"
       "   if ($text or $children or $attrs) then\n"
       "      (\n"
       "      element {$name}\n"
       "         {\n"
       "         $attrs,\n"
       "         if ($text) then\n"
       "            ($text)\n"
       "         else\n"
       "            (),\n"
       "         for $child in $children\n"
       "         return ($child)\n"
       "         }\n"
       "      )\n"
       "   else\n"
       "      ()\n"
       "};\n"},
      {"et2ec/3", 0x0040, 376,
       "\n\ndeclare function local:et2ec(\n"
       "   $name     as xs:string,\n"
       "   $text     as text()*,\n"
       "   $children as element()*)\n"
       "   as element()?\n"
       "{\n"
       "   if ($text or $children) then\n"
       "      (\n"
       "      element {$name}\n"
       "         {\n"
       "         if ($text) then\n"
       "            ($text)\n"
       "         else\n"
       "            (),\n"
       "         for $child in $children\n"
       "         return ($child)\n"
       "         }\n"
       "      )\n"
       "   else\n"
       "      ()\n"
       "};\n"},
      {"ma", 0x8020, 378,
       "\n\ndeclare function local:ma(\n"
       "   $attrName as xs:string,\n"
       "   $attr     as element()*)\n"
       "   as attribute()?\n"
       "{\n"
       "   if ($attr) then\n"
       "      (\n"
       "      let $attrText := local:gt($attr)\n"
       "      return if ($attrText) then\n"
       "                attribute {$attrName}\n"
       "                   {\n"
       "                   $attrText\n"
       "                   }\n"
       "             else\n"
       "                ()\n"
       "      )\n"
       "   else\n"
       "      ()\n"
       "};\n"},
      {"msa", 0x0010, 225,
       "\n\ndeclare function local:msa(\n"
       "   $attrName as xs:string,\n"
       "   $attr     as xs:string)\n"
       "   as attribute()?\n"
       "{\n"
       "   if ($attr) then\n"
       "      (\n"
       "      attribute {$attrName}\n"
       "         {\n"
       "         $attr\n"
       "         }\n"
       "      )\n"
       "   else\n"
       "      ()\n"
       "};\n"},
  };
  return texts;
}

/** The declarations of the functions of those names, which stand in the order of the library. */
inline std::string declarationsOf(const std::vector<std::string_view>& names) {
  std::string declarations;
  auto next = names.begin();
  for (const LibraryText& function : libraryTexts()) {
    if (next == names.end() || *next != function.name) continue;
    declarations += function.text;
    ++next;
  }
  if (next != names.end()) throw std::logic_error("unknown or out of order: " + std::string(*next));
  return declarations;
}

#endif

// The shapes of rows-to-XML queries: a model, the choice of columns, some rows, and for grouping off and on the whole
// query text and the document that it makes of the rows.
// Used by tests/unit/kvxdmxqy_from_rows_test.cpp and tests/processor/kvxdmxqy_from_rows_run_test.cpp.
#ifndef KVXDM_TESTS_FROM_ROWS_SHAPES_H
#define KVXDM_TESTS_FROM_ROWS_SHAPES_H

#include <algorithm>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "from_rows_library.h"

struct SelectedNode {
  const char* xpath;
  const char* name;
  int groupLevel = 0;
  const char* ownXPath = "";
};

struct FromRowsQuery {
  std::vector<std::string_view> functions;  // the declared ones, as in from_rows_library.h
  const char* body;
  const char* document;  // empty when the processors refuse the text

  bool declares(std::string_view function) const {
    return std::find(functions.begin(), functions.end(), function) != functions.end();
  }
};

struct FromRowsShape {
  const char* name;
  const char* model;  // an XDM document, with the mark of the row
  std::vector<SelectedNode> columns;
  const char* rows;
  FromRowsQuery plain;
  FromRowsQuery grouped;
  const char* namespaceProlog = "";
  bool groupExplicit = false;
  std::vector<std::pair<const char*, const char*>> defaults = {};  // of attributes, by XPath

  const FromRowsQuery& query(bool groupRows) const { return groupRows ? grouped : plain; }
};

inline std::ostream& operator<<(std::ostream& stream, const FromRowsShape& shape) { return stream << shape.name; }

/** The whole text of a shape's query, as asked for with streaming. */
inline std::string textOf(const FromRowsShape& shape, bool groupRows) {
  const FromRowsQuery& query = shape.query(groupRows);
  return "xquery version \"1.0\";\ndeclare boundary-space preserve;\n" + std::string(shape.namespaceProlog) +
         declarationsOf(query.functions) + "\n\n" + query.body;
}

constexpr char rowWithAttributeAndElement[] = R"(<xdm version="1.0">
  <element name="a"><element name="r" decides="true"><attribute name="k"/><element name="c1"/></element></element>
</xdm>)";

constexpr char rowWithX[] = R"(<xdm version="1.0">
  <element name="a"><element name="r" decides="true">
    <element name="x"><attribute name="k"/><attribute name="m"/><element name="y"/></element></element></element>
</xdm>)";

constexpr char rowInDept[] = R"(<xdm version="1.0">
  <element name="a"><element name="dept"><attribute name="id"/><attribute name="site"/>
    <element name="r" decides="true"><element name="c"/></element></element></element>
</xdm>)";

constexpr char rowInTeam[] = R"(<xdm version="1.0">
  <element name="a"><element name="region"><attribute name="zone"/><element name="team"><attribute name="id"/>
    <element name="r" decides="true"><element name="c"/></element></element></element></element>
</xdm>)";

constexpr char rowAmongElements[] = R"(<xdm version="1.0">
  <element name="a"><element name="dept"><attribute name="id"/><element name="head"/><element name="note"/>
    <element name="r" decides="true"><element name="c"/></element><element name="tail"/></element></element>
</xdm>)";

constexpr char rowBelowElements[] = R"(<xdm version="1.0">
  <element name="a"><element name="dept"><attribute name="id"/><element name="head"/>
    <element name="team"><element name="r" decides="true"><element name="c"/></element></element>
    <element name="tail"/></element></element>
</xdm>)";

constexpr char rowInRoot[] = R"(<xdm version="1.0">
  <element name="a"><attribute name="k"/><element name="head"/>
    <element name="r" decides="true"><element name="x"/><element name="c"/></element><element name="tail"/></element>
</xdm>)";

inline const std::vector<FromRowsShape>& fromRowsShapes() {
  static const std::vector<FromRowsShape> shapes = {
      {"RowWithAttributeAndElement",
       rowWithAttributeAndElement,
       {{"/a/r/@k", "k"}, {"/a/r/c1", "c1"}},
       "<table><row><k>1</k><c1>x</c1></row><row><k>2</k><c1/></row></table>",
       {{"gt", "e2e/2"},
        R"(<a>{for $row in /table/row
return
(
<r   k="{local:gt($row/k)}">{local:e2e("c1", $row/c1)}</r>)}</a>)",
        R"(<a><r k="1"><c1>x</c1></r><r k="2"/></a>)"},
       {{"gt", "e2e/2"},
        R"(<a>{
(let $rows := /table/row
for $row in $rows
return
(
<r   k="{local:gt($row/k)}">{local:e2e("c1", $row/c1)}</r>))}</a>)",
        R"(<a><r k="1"><c1>x</c1></r><r k="2"/></a>)"}},

      // Each row of the choice of functions: what stands in x, or in dept

      {"ElementWithAttributes",
       rowWithX,
       {{"/a/r/x/@k", "k"}, {"/a/r/x/@m", "m"}},
       "<table><row><k>1</k><m>2</m></row><row><k>3</k><m/></row><row><k/><m/></row></table>",
       {{"gt", "e2e_na", "ma"},
        R"(<a>{for $row in /table/row
return
(
<r>{local:e2e_na("x", (local:ma("k", $row/k),local:ma("m", $row/m)))}</r>)}</a>)",
        R"(<a><r><x k="1" m="2"/></r><r><x k="3"/></r><r/></a>)"},
       {{"gt", "e2e_na", "ma"},
        R"(<a>{
(let $rows := /table/row
for $row in $rows
return
(
<r>{local:e2e_na("x", (local:ma("k", $row/k),local:ma("m", $row/m)))}</r>))}</a>)",
        R"(<a><r><x k="1" m="2"/></r><r><x k="3"/></r><r/></a>)"}},

      {"ElementWithTextAndAttributes",
       rowWithX,
       {{"/a/r/x", "x"}, {"/a/r/x/@k", "k"}, {"/a/r/x/@m", "m"}},
       "<table><row><x>t</x><k>1</k><m>2</m></row><row><x/><k>3</k><m/></row></table>",
       {{"gt", "e2e/3", "ma"},
        R"(<a>{for $row in /table/row
return
(
<r>{local:e2e("x", $row/x,
  (local:ma("k", $row/k),local:ma("m", $row/m)))}</r>)}</a>)",
        R"(<a><r><x k="1" m="2">t</x></r><r><x k="3"/></r></a>)"},
       {{"gt", "e2e/3", "ma"},
        R"(<a>{
(let $rows := /table/row
for $row in $rows
return
(
<r>{local:e2e("x", $row/x,
  (local:ma("k", $row/k),local:ma("m", $row/m)))}</r>))}</a>)",
        R"(<a><r><x k="1" m="2">t</x></r><r><x k="3"/></r></a>)"}},

      {"ElementWithElements",
       rowWithX,
       {{"/a/r/x/y", "y"}},
       "<table><row><y>1</y></row><row><y/></row></table>",
       {{"gt", "e2e/2", "e2ec/2"},
        R"(<a>{for $row in /table/row
return
(
<r>{local:e2ec("x", (local:e2e("y", $row/y)))}</r>)}</a>)",
        R"(<a><r><x><y>1</y></x></r><r/></a>)"},
       {{"gt", "e2e/2", "e2ec/2"},
        R"(<a>{
(let $rows := /table/row
for $row in $rows
return
(
<r>{local:e2ec("x", (local:e2e("y", $row/y)))}</r>))}</a>)",
        R"(<a><r><x><y>1</y></x></r><r/></a>)"}},

      {"ElementWithTextAndElements",
       rowWithX,
       {{"/a/r/x", "x"}, {"/a/r/x/y", "y"}},
       "<table><row><x>t</x><y>1</y></row><row><x>u</x><y/></row></table>",
       {{"gt", "e2e/2", "e2ec/3"},
        R"(<a>{for $row in /table/row
return
(
<r>{local:e2ec("x", $row/x,
  (local:e2e("y", $row/y)))}</r>)}</a>)",
        R"(<a><r><x>t<y>1</y></x></r><r><x>u</x></r></a>)"},
       {{"gt", "e2e/2", "e2ec/3"},
        R"(<a>{
(let $rows := /table/row
for $row in $rows
return
(
<r>{local:e2ec("x", $row/x,
  (local:e2e("y", $row/y)))}</r>))}</a>)",
        R"(<a><r><x>t<y>1</y></x></r><r><x>u</x></r></a>)"}},

      {"ElementWithTextAndElementsFromAGroup",
       rowInDept,
       {{"/a/dept", "dept", 1}, {"/a/dept/r/c", "c"}},
       "<table><row><dept>A</dept><c>1</c></row><row><dept>B</dept><c>2</c></row>"
       "<row><dept>A</dept><c>3</c></row></table>",
       {{"gt", "e2e/2", "et2ec/3"},
        R"(<a>{local:et2ec("dept", /table/row[1]/dept,
  (for $row in /table/row
return
(
<r>{local:e2e("c", $row/c)}</r>)))}</a>)",
        ""},
       {{"gt", "e2e/2", "et2ec/3"},
        R"(<a>{for $dept in distinct-values(/table/row/dept)
return
(local:et2ec("dept", text{$dept},
(let $rows := /table/row[dept = $dept]
for $row in $rows
return
(
(<r>{local:e2e("c", $row/c)}</r>)))))}</a>)",
        "<a><dept>A<r><c>1</c></r><r><c>3</c></r></dept><dept>B<r><c>2</c></r></dept></a>"}},

      {"ElementWithAttributesAndElements",
       rowWithX,
       {{"/a/r/x/@k", "k"}, {"/a/r/x/y", "y"}},
       "<table><row><k>1</k><y>2</y></row><row><k/><y>3</y></row></table>",
       {{"gt", "e2e/2", "e2ec_nac", "ma"},
        R"(<a>{for $row in /table/row
return
(
<r>{local:e2ec_nac("x", (local:ma("k", $row/k)),
  (local:e2e("y", $row/y)))}</r>)}</a>)",
        R"(<a><r><x k="1"><y>2</y></x></r><r><x><y>3</y></x></r></a>)"},
       {{"gt", "e2e/2", "e2ec_nac", "ma"},
        R"(<a>{
(let $rows := /table/row
for $row in $rows
return
(
<r>{local:e2ec_nac("x", (local:ma("k", $row/k)),
  (local:e2e("y", $row/y)))}</r>))}</a>)",
        R"(<a><r><x k="1"><y>2</y></x></r><r><x><y>3</y></x></r></a>)"}},

      {"ElementWithTextAttributesAndElements",
       rowWithX,
       {{"/a/r/x", "x"}, {"/a/r/x/@k", "k"}, {"/a/r/x/y", "y"}},
       "<table><row><x>t</x><k>1</k><y>2</y></row><row><x>u</x><k/><y/></row></table>",
       {{"gt", "e2e/2", "e2ec/4", "ma"},
        R"(<a>{for $row in /table/row
return
(
<r>{local:e2ec("x", $row/x,
  (local:ma("k", $row/k)),
  (local:e2e("y", $row/y)))}</r>)}</a>)",
        R"(<a><r><x k="1">t<y>2</y></x></r><r><x>u</x></r></a>)"},
       {{"gt", "e2e/2", "e2ec/4", "ma"},
        R"(<a>{
(let $rows := /table/row
for $row in $rows
return
(
<r>{local:e2ec("x", $row/x,
  (local:ma("k", $row/k)),
  (local:e2e("y", $row/y)))}</r>))}</a>)",
        R"(<a><r><x k="1">t<y>2</y></x></r><r><x>u</x></r></a>)"}},

      {"ElementWithTextAttributesAndElementsFromAGroup",
       rowInDept,
       {{"/a/dept", "dept", 1}, {"/a/dept/@id", "id"}, {"/a/dept/r/c", "c"}},
       "<table><row><dept>A</dept><id>7</id><c>1</c></row><row><dept>B</dept><id>8</id><c>2</c></row>"
       "<row><dept>A</dept><id>9</id><c>3</c></row></table>",
       {{"gt", "e2e/2", "et2ec/4", "ma"},
        R"(<a>{local:et2ec("dept", /table/row[1]/dept,
  (local:ma("id", /table/row[1]/id)),
  (for $row in /table/row
return
(
<r>{local:e2e("c", $row/c)}</r>)))}</a>)",
        ""},
       {{"gt", "e2e/2", "et2ec/4", "ma"},
        R"(<a>{for $dept in distinct-values(/table/row/dept)
return
(local:et2ec("dept", text{$dept},
  (local:ma("id", /table/row[dept = $dept][1]/id)),
(let $rows := /table/row[dept = $dept]
for $row in $rows
return
(
(<r>{local:e2e("c", $row/c)}</r>)))))}</a>)",
        R"(<a><dept id="7">A<r><c>1</c></r><r><c>3</c></r></dept><dept id="8">B<r><c>2</c></r></dept></a>)"}},

      // The row itself

      {"RowWithAttributesOnly",
       R"(<xdm version="1.0"><element name="a"><element name="r" decides="true"><attribute name="k"/>
<attribute name="m"/></element></element></xdm>)",
       {{"/a/r/@k", "k"}, {"/a/r/@m", "m"}},
       "<table><row><k>1</k><m>2</m></row><row><k>3</k><m/></row></table>",
       {{"gt"},
        R"(<a>{for $row in /table/row
return
(
<r   k="{local:gt($row/k)}"   m="{local:gt($row/m)}"/>)}</a>)",
        R"(<a><r k="1" m="2"/><r k="3" m=""/></a>)"},
       {{"gt"},
        R"(<a>{
(let $rows := /table/row
for $row in $rows
return
(
<r   k="{local:gt($row/k)}"   m="{local:gt($row/m)}"/>))}</a>)",
        R"(<a><r k="1" m="2"/><r k="3" m=""/></a>)"}},

      {"RowWithTextOnly",
       rowWithAttributeAndElement,
       {{"/a/r", "r"}},
       "<table><row><r>t</r></row><row><r>u</r></row></table>",
       {{"gt"},
        R"(<a>{for $row in /table/row
return
(
<r>{local:gt($row/r)}</r>)}</a>)",
        R"(<a><r>t</r><r>u</r></a>)"},
       {{"gt"},
        R"(<a>{
(let $rows := /table/row
for $row in $rows
return
(
<r>{local:gt($row/r)}</r>))}</a>)",
        R"(<a><r>t</r><r>u</r></a>)"}},

      {"RowWithTextAttributeAndElement",
       rowWithAttributeAndElement,
       {{"/a/r", "r"}, {"/a/r/@k", "k"}, {"/a/r/c1", "c1"}},
       "<table><row><r>t</r><k>1</k><c1>x</c1></row></table>",
       {{"gt", "e2e/2"},
        R"(<a>{for $row in /table/row
return
(
<r   k="{local:gt($row/k)}">{local:gt($row/r),
local:e2e("c1", $row/c1)}</r>)}</a>)",
        R"(<a><r k="1">t<c1>x</c1></r></a>)"},
       {{"gt", "e2e/2"},
        R"(<a>{
(let $rows := /table/row
for $row in $rows
return
(
<r   k="{local:gt($row/k)}">{local:gt($row/r),
local:e2e("c1", $row/c1)}</r>))}</a>)",
        R"(<a><r k="1">t<c1>x</c1></r></a>)"}},

      {"GroupColumnsOfTheRow",
       rowWithAttributeAndElement,
       {{"/a/r/@k", "k", 1}, {"/a/r/c1", "c1", 1}},
       "<table><row><k>1</k><c1>x</c1></row><row><k>1</k><c1>x</c1></row></table>",
       {{"gt", "e2e/2"},
        R"(<a>{for $row in /table/row
return
(
<r   k="{local:gt($row/k)}">{local:e2e("c1", $row/c1)}</r>)}</a>)",
        R"(<a><r k="1"><c1>x</c1></r><r k="1"><c1>x</c1></r></a>)"},
       {{"gt", "e2e/2"},
        R"(<a>{
(let $rows := /table/row
for $row in $rows
return
(
<r   k="{local:gt($row/k)}">{local:e2e("c1", $row/c1)}</r>))}</a>)",
        R"(<a><r k="1"><c1>x</c1></r><r k="1"><c1>x</c1></r></a>)"}},

      // An element with text and children whose column is a group column, but which no group loop surrounds
      {"GroupColumnOfAnElementInTheRow",
       rowWithX,
       {{"/a/r/x", "x", 1}, {"/a/r/x/y", "y"}},
       "<table><row><x>t</x><y>1</y></row></table>",
       {{"gt", "e2e/2", "et2ec/3"},
        R"(<a>{for $row in /table/row
return
(
<r>{local:et2ec("x", $row/x,
  (local:e2e("y", $row/y)))}</r>)}</a>)",
        ""},
       {{"gt", "e2e/2", "et2ec/3"},
        R"(<a>{
(let $rows := /table/row
for $row in $rows
return
(
<r>{local:et2ec("x", $row/x,
  (local:e2e("y", $row/y)))}</r>))}</a>)",
        ""}},

      {"NoColumnAtTheRow",
       rowInRoot,
       {{"/a/head", "head"}},
       "<table><row><head>H1</head></row><row><head>H2</head></row></table>",
       {{"gt", "e2e/2"}, R"(<a>{local:e2e("head", /table/row[1]/head)}</a>)", "<a><head>H1</head></a>"},
       {{"gt", "e2e/2"},
        R"(<a>{
(let $rows := /table/row
for $row in $rows
return
(

if ($row is $rows[1]) then
   local:e2e("head", $row/head)
else
   ())}</a>)",
        ""}},

      {"RootAsTheRow",
       R"(<xdm version="1.0"><element name="a" decides="true"><attribute name="k"/><element name="c"/></element>
</xdm>)",
       {{"/a/@k", "k"}, {"/a/c", "c"}},
       "<table><row><k>1</k><c>x</c></row><row><k>2</k><c>y</c></row></table>",
       {{"gt", "e2e/2"},
        R"(<a   k="{local:gt(/table/row[1]/k)}">{local:e2e("c", /table/row[1]/c)}</a>)",
        R"(<a k="1"><c>x</c></a>)"},
       {{"gt", "e2e/2"},
        R"(<a   k="{local:gt(/table/row[1]/k)}">{local:e2e("c", /table/row[1]/c)}</a>)",
        R"(<a k="1"><c>x</c></a>)"}},

      {"NoRow",
       R"(<xdm version="1.0"><element name="a"><element name="b"><element name="c"/></element></element></xdm>)",
       {{"/a/b/c", "c"}},
       "<table><row><c>x</c></row><row><c>y</c></row></table>",
       {{"gt", "e2e/2", "e2ec/2"},
        R"(<a>{local:e2ec("b", (local:e2e("c", /table/row[1]/c)))}</a>)",
        "<a><b><c>x</c></b></a>"},
       {{"gt", "e2e/2", "e2ec/2"},
        R"(<a>{local:e2ec("b", (local:e2e("c", /table/row[1]/c)))}</a>)",
        "<a><b><c>x</c></b></a>"}},

      // Levels above the row

      {"RowTwoLevelsDown",
       R"(<xdm version="1.0"><element name="a"><element name="b"><element name="r" decides="true"><element name="c"/>
</element></element></element></xdm>)",
       {{"/a/b/r/c", "c"}},
       "<table><row><c>1</c></row><row><c>2</c></row></table>",
       {{"gt", "e2e/2", "e2ec/2"},
        R"(<a>{local:e2ec("b", (for $row in /table/row
return
(
<r>{local:e2e("c", $row/c)}</r>)))}</a>)",
        "<a><b><r><c>1</c></r><r><c>2</c></r></b></a>"},
       {{"gt", "e2e/2", "e2ec/2"},
        R"(<a>{local:e2ec("b", )"
        "\n"
        R"((let $rows := /table/row
for $row in $rows
return
(
(<r>{local:e2e("c", $row/c)}</r>))))}</a>)",
        "<a><b><r><c>1</c></r><r><c>2</c></r></b></a>"}},

      {"RowThreeLevelsDown",
       R"(<xdm version="1.0"><element name="a"><element name="b"><element name="d"><element name="r" decides="true">
<element name="c"/></element></element></element></element></xdm>)",
       {{"/a/b/d/r/c", "c"}},
       "<table><row><c>1</c></row><row><c>2</c></row></table>",
       {{"gt", "e2e/2", "e2ec/2"},
        R"(<a>{local:e2ec("b", (local:e2ec("d", (for $row in /table/row
return
(
<r>{local:e2e("c", $row/c)}</r>)))))}</a>)",
        "<a><b><d><r><c>1</c></r><r><c>2</c></r></d></b></a>"},
       {{"gt", "e2e/2", "e2ec/2"},
        R"(<a>{local:e2ec("b", (local:e2ec("d", )"
        "\n"
        R"((let $rows := /table/row
for $row in $rows
return
(
(<r>{local:e2e("c", $row/c)}</r>))))))}</a>)",
        "<a><b><d><r><c>1</c></r><r><c>2</c></r></d></b></a>"}},

      // Groups

      {"GroupsOnElements",
       rowInTeam,
       {{"/a/region", "region", 1}, {"/a/region/team", "team", 1}, {"/a/region/team/r/c", "c"}},
       "<table><row><region>N</region><team>T1</team><c>1</c></row><row><region>S</region><team>T2</team><c>2</c></row>"
       "<row><region>N</region><team>T1</team><c>3</c></row>"
       "<row><region>N</region><team>T2</team><c>4</c></row></table>",
       {{"gt", "e2e/2", "et2ec/3"},
        R"(<a>{local:et2ec("region", /table/row[1]/region,
  (local:et2ec("team", /table/row[1]/team,
  (for $row in /table/row
return
(
<r>{local:e2e("c", $row/c)}</r>)))))}</a>)",
        ""},
       {{"gt", "e2e/2", "et2ec/3"},
        R"(<a>{for $region in distinct-values(/table/row/region)
return
(local:et2ec("region", text{$region},
  (for $team in distinct-values(/table/row[region = $region]/team)
return
(local:et2ec("team", text{$team},
(let $rows := /table/row[region = $region and team = $team]
for $row in $rows
return
(
(<r>{local:e2e("c", $row/c)}</r>))))))))}</a>)",
        "<a><region>N<team>T1<r><c>1</c></r><r><c>3</c></r></team><team>T2<r><c>4</c></r></team></region>"
        "<region>S<team>T2<r><c>2</c></r></team></region></a>"}},

      {"GroupsOnAttributes",
       rowInTeam,
       {{"/a/region/@zone", "zone", 1}, {"/a/region/team/@id", "id", 1}, {"/a/region/team/r/c", "c"}},
       "<table><row><zone>N</zone><id>T1</id><c>1</c></row><row><zone>S</zone><id>T2</id><c>2</c></row>"
       "<row><zone>N</zone><id>T1</id><c>3</c></row></table>",
       {{"gt", "e2e/2", "e2ec_nac", "ma"},
        R"(<a>{local:e2ec_nac("region", (local:ma("zone", /table/row[1]/zone)),
  (local:e2ec_nac("team", (local:ma("id", /table/row[1]/id)),
  (for $row in /table/row
return
(
<r>{local:e2e("c", $row/c)}</r>)))))}</a>)",
        R"(<a><region zone="N"><team id="T1"><r><c>1</c></r><r><c>2</c></r><r><c>3</c></r></team></region></a>)"},
       {{"gt", "e2e/2", "e2ec_nac", "msa"},
        R"(<a>{for $zone in distinct-values(/table/row/zone)
return
(local:e2ec_nac("region", (local:msa("zone", $zone)),
  (for $id in distinct-values(/table/row[zone = $zone]/id)
return
(local:e2ec_nac("team", (local:msa("id", $id)),
(let $rows := /table/row[zone = $zone and id = $id]
for $row in $rows
return
(
(<r>{local:e2e("c", $row/c)}</r>))))))))}</a>)",
        R"(<a><region zone="N"><team id="T1"><r><c>1</c></r><r><c>3</c></r></team></region>)"
        R"(<region zone="S"><team id="T2"><r><c>2</c></r></team></region></a>)"}},

      {"GroupsOnElementAndAttributesByPlace",
       rowInTeam,
       {{"/a/region", "region", 4},
        {"/a/region/@zone", "zone", 3},
        {"/a/region/team/@id", "team", 1},
        {"/a/region/team/r/c", "c"}},
       "<table><row><region>N</region><zone>z1</zone><team>T1</team><c>1</c></row>"
       "<row><region>N</region><zone>z2</zone><team>T1</team><c>2</c></row>"
       "<row><region>S</region><zone>z3</zone><team>T2</team><c>3</c></row>"
       "<row><region>N</region><zone>z1</zone><team>T2</team><c>4</c></row></table>",
       {{"gt", "e2e/2", "e2ec_nac", "et2ec/4", "ma"},
        R"(<a>{local:et2ec("region", /table/row[1]/region,
  (local:ma("zone", /table/row[1]/zone)),
  (local:e2ec_nac("team", (local:ma("id", /table/row[1]/team)),
  (for $row in /table/row
return
(
<r>{local:e2e("c", $row/c)}</r>)))))}</a>)",
        ""},
       {{"gt", "e2e/2", "e2ec_nac", "et2ec/4", "ma", "msa"},
        R"(<a>{for $region in distinct-values(/table/row/region)
return
(local:et2ec("region", text{$region},
  (local:ma("zone", /table/row[region = $region][1]/zone)),
  (for $team in distinct-values(/table/row[region = $region]/team)
return
(local:e2ec_nac("team", (local:msa("id", $team)),
(let $rows := /table/row[region = $region and team = $team]
for $row in $rows
return
(
(<r>{local:e2e("c", $row/c)}</r>))))))))}</a>)",
        R"(<a><region zone="z1">N<team id="T1"><r><c>1</c></r><r><c>2</c></r></team>)"
        R"(<team id="T2"><r><c>4</c></r></team></region>)"
        R"(<region zone="z3">S<team id="T2"><r><c>3</c></r></team></region></a>)"}},

      {"GroupsOnElementAndAttributesByLevel",
       rowInTeam,
       {{"/a/region", "region", 4},
        {"/a/region/@zone", "zone", 3},
        {"/a/region/team/@id", "team", 1},
        {"/a/region/team/r/c", "c"}},
       "<table><row><region>N</region><zone>z1</zone><team>T1</team><c>1</c></row>"
       "<row><region>N</region><zone>z2</zone><team>T1</team><c>2</c></row>"
       "<row><region>S</region><zone>z3</zone><team>T2</team><c>3</c></row>"
       "<row><region>N</region><zone>z1</zone><team>T2</team><c>4</c></row></table>",
       {{"gt", "e2e/2", "e2ec_nac", "et2ec/4", "ma"},
        R"(<a>{local:et2ec("region", /table/row[1]/region,
  (local:ma("zone", /table/row[1]/zone)),
  (local:e2ec_nac("team", (local:ma("id", /table/row[1]/team)),
  (for $row in /table/row
return
(
<r>{local:e2e("c", $row/c)}</r>)))))}</a>)",
        ""},
       {{"gt", "e2e/2", "e2ec_nac", "et2ec/4", "msa"},
        R"(<a>{for $region in distinct-values(/table/row/region)
return
(for $zone in distinct-values(/table/row[region = $region]/zone)
return
(local:et2ec("region", text{$region},
  (local:msa("zone", $zone)),
  (for $team in distinct-values(/table/row[region = $region and zone = $zone]/team)
return
(local:e2ec_nac("team", (local:msa("id", $team)),
(let $rows := /table/row[region = $region and zone = $zone and team = $team]
for $row in $rows
return
(
(<r>{local:e2e("c", $row/c)}</r>)))))))))}</a>)",
        R"(<a><region zone="z1">N<team id="T1"><r><c>1</c></r></team><team id="T2"><r><c>4</c></r></team></region>)"
        R"(<region zone="z2">N<team id="T1"><r><c>2</c></r></team></region>)"
        R"(<region zone="z3">S<team id="T2"><r><c>3</c></r></team></region></a>)"},
       "",
       true},

      {"TwoGroupAttributesByPlace",
       rowInDept,
       {{"/a/dept/@id", "id", 1}, {"/a/dept/@site", "site", 2}, {"/a/dept/r/c", "c"}},
       "<table><row><id>1</id><site>x</site><c>a</c></row><row><id>2</id><site>y</site><c>b</c></row>"
       "<row><id>1</id><site>y</site><c>c</c></row></table>",
       {{"gt", "e2e/2", "e2ec_nac", "ma"},
        R"(<a>{local:e2ec_nac("dept", (local:ma("id", /table/row[1]/id),local:ma("site", /table/row[1]/site)),
  (for $row in /table/row
return
(
<r>{local:e2e("c", $row/c)}</r>)))}</a>)",
        R"(<a><dept id="1" site="x"><r><c>a</c></r><r><c>b</c></r><r><c>c</c></r></dept></a>)"},
       {{"gt", "e2e/2", "e2ec_nac", "ma", "msa"},
        R"(<a>{for $id in distinct-values(/table/row/id)
return
(local:e2ec_nac("dept", (local:msa("id", $id),local:ma("site", /table/row[id = $id][1]/site)),
(let $rows := /table/row[id = $id]
for $row in $rows
return
(
(<r>{local:e2e("c", $row/c)}</r>)))))}</a>)",
        R"(<a><dept id="1" site="x"><r><c>a</c></r><r><c>c</c></r></dept>)"
        R"(<dept id="2" site="y"><r><c>b</c></r></dept></a>)"}},

      {"TwoGroupAttributesByLevel",
       rowInDept,
       {{"/a/dept/@id", "id", 1}, {"/a/dept/@site", "site", 2}, {"/a/dept/r/c", "c"}},
       "<table><row><id>1</id><site>x</site><c>a</c></row><row><id>2</id><site>y</site><c>b</c></row>"
       "<row><id>1</id><site>y</site><c>c</c></row></table>",
       {{"gt", "e2e/2", "e2ec_nac", "ma"},
        R"(<a>{local:e2ec_nac("dept", (local:ma("id", /table/row[1]/id),local:ma("site", /table/row[1]/site)),
  (for $row in /table/row
return
(
<r>{local:e2e("c", $row/c)}</r>)))}</a>)",
        R"(<a><dept id="1" site="x"><r><c>a</c></r><r><c>b</c></r><r><c>c</c></r></dept></a>)"},
       {{"gt", "e2e/2", "e2ec_nac", "msa"},
        R"(<a>{for $site in distinct-values(/table/row/site)
return
(for $id in distinct-values(/table/row[site = $site]/id)
return
(local:e2ec_nac("dept", (local:msa("id", $id),local:msa("site", $site)),
(let $rows := /table/row[site = $site and id = $id]
for $row in $rows
return
(
(<r>{local:e2e("c", $row/c)}</r>))))))}</a>)",
        R"(<a><dept id="1" site="x"><r><c>a</c></r></dept><dept id="2" site="y"><r><c>b</c></r></dept>)"
        R"(<dept id="1" site="y"><r><c>c</c></r></dept></a>)"},
       "",
       true},

      // Of two group columns with one level on one element only the later one opens a loop, yet both are taken from a
      // variable.
      {"TwoGroupAttributesOfOneLevel",
       rowInDept,
       {{"/a/dept/@id", "id", 1}, {"/a/dept/@site", "site", 1}, {"/a/dept/r/c", "c"}},
       "<table><row><id>1</id><site>x</site><c>a</c></row></table>",
       {{"gt", "e2e/2", "e2ec_nac", "ma"},
        R"(<a>{local:e2ec_nac("dept", (local:ma("id", /table/row[1]/id),local:ma("site", /table/row[1]/site)),
  (for $row in /table/row
return
(
<r>{local:e2e("c", $row/c)}</r>)))}</a>)",
        R"(<a><dept id="1" site="x"><r><c>a</c></r></dept></a>)"},
       {{"gt", "e2e/2", "e2ec_nac", "msa"},
        R"(<a>{for $site in distinct-values(/table/row/site)
return
(local:e2ec_nac("dept", (local:msa("id", $id),local:msa("site", $site)),
(let $rows := /table/row[site = $site]
for $row in $rows
return
(
(<r>{local:e2e("c", $row/c)}</r>)))))}</a>)",
        ""},
       "",
       true},

      {"GroupColumnBesideTheRow",
       rowBelowElements,
       {{"/a/dept/@id", "id", 1}, {"/a/dept/head", "head", 1}, {"/a/dept/team/r/c", "c"}},
       "<table><row><id>1</id><head>H1</head><c>a</c></row></table>",
       {{"gt", "e2e/2", "e2ec_nac", "e2ec/2", "ma"},
        R"(<a>{local:e2ec_nac("dept", (local:ma("id", /table/row[1]/id)),
  (local:e2e("head", /table/row[1]/head),
local:e2ec("team", (for $row in /table/row
return
(
<r>{local:e2e("c", $row/c)}</r>)))))}</a>)",
        R"(<a><dept id="1"><head>H1</head><team><r><c>a</c></r></team></dept></a>)"},
       {{"gt", "e2e/2", "e2ec_nac", "e2ec/2", "msa"},
        R"(<a>{for $id in distinct-values(/table/row/id)
return
(local:e2ec_nac("dept", (local:msa("id", $id)),
  (local:e2e("head", text{$head}),
local:e2ec("team", )"
        "\n"
        R"((let $rows := /table/row[id = $id]
for $row in $rows
return
(
(<r>{local:e2e("c", $row/c)}</r>)))))))}</a>)",
        ""}},

      // Elements before and after the row

      {"ElementsAroundTheRow",
       rowAmongElements,
       {{"/a/dept/head", "head"}, {"/a/dept/note", "note"}, {"/a/dept/r/c", "c"}, {"/a/dept/tail", "tail"}},
       "<table><row><head>H1</head><note>N1</note><c>1</c><tail>T1</tail></row>"
       "<row><head>H2</head><note>N2</note><c>2</c><tail>T2</tail></row></table>",
       {{"gt", "e2e/2", "e2ec/2"},
        R"(<a>{local:e2ec("dept", (local:e2e("head", /table/row[1]/head),
local:e2e("note", /table/row[1]/note),
for $row in /table/row
return
(
<r>{local:e2e("c", $row/c)}</r>),
local:e2e("tail", /table/row[1]/tail)))}</a>)",
        "<a><dept><head>H1</head><note>N1</note><r><c>1</c></r><r><c>2</c></r><tail>T1</tail></dept></a>"},
       {{"gt", "e2e/2", "e2ec/2"},
        R"(<a>{local:e2ec("dept", )"
        "\n"
        R"((let $rows := /table/row
for $row in $rows
return
(
(
if ($row is $rows[1]) then
   local:e2e("head", $row/head)
else
   (),
(
if ($row is $rows[1]) then
   local:e2e("note", $row/note)
else
   ()),
<r>{local:e2e("c", $row/c)}</r>),
(
if ($row is $rows[last()]) then
   local:e2e("tail", $row/tail)
else
   ()))))}</a>)",
        "<a><dept><head>H1</head><note>N1</note><r><c>1</c></r><r><c>2</c></r><tail>T2</tail></dept></a>"}},

      {"ElementsAroundTheRowInAGroup",
       rowAmongElements,
       {{"/a/dept/@id", "id", 1}, {"/a/dept/head", "head"}, {"/a/dept/r/c", "c"}, {"/a/dept/tail", "tail"}},
       "<table><row><id>1</id><head>H1</head><c>a</c><tail>T1</tail></row>"
       "<row><id>2</id><head>H2</head><c>b</c><tail>T2</tail></row>"
       "<row><id>1</id><head>H3</head><c>c</c><tail>T3</tail></row></table>",
       {{"gt", "e2e/2", "e2ec_nac", "ma"},
        R"(<a>{local:e2ec_nac("dept", (local:ma("id", /table/row[1]/id)),
  (local:e2e("head", /table/row[1]/head),
for $row in /table/row
return
(
<r>{local:e2e("c", $row/c)}</r>),
local:e2e("tail", /table/row[1]/tail)))}</a>)",
        R"(<a><dept id="1"><head>H1</head><r><c>a</c></r><r><c>b</c></r><r><c>c</c></r><tail>T1</tail></dept></a>)"},
       {{"gt", "e2e/2", "e2ec_nac", "msa"},
        R"(<a>{for $id in distinct-values(/table/row/id)
return
(local:e2ec_nac("dept", (local:msa("id", $id)),
(let $rows := /table/row[id = $id]
for $row in $rows
return
(
(
if ($row is $rows[1]) then
   local:e2e("head", $row/head)
else
   (),
<r>{local:e2e("c", $row/c)}</r>),
(
if ($row is $rows[last()]) then
   local:e2e("tail", $row/tail)
else
   ())))))}</a>)",
        R"(<a><dept id="1"><head>H1</head><r><c>a</c></r><r><c>c</c></r><tail>T3</tail></dept>)"
        R"(<dept id="2"><head>H2</head><r><c>b</c></r><tail>T2</tail></dept></a>)"}},

      // With grouping the row ends the root's row loop before the element behind it comes.
      {"ElementsAroundTheRowInTheRoot",
       rowInRoot,
       {{"/a/head", "head"}, {"/a/r/c", "c"}, {"/a/tail", "tail"}},
       "<table><row><head>H1</head><c>1</c><tail>T1</tail></row>"
       "<row><head>H2</head><c>2</c><tail>T2</tail></row></table>",
       {{"gt", "e2e/2"},
        R"(<a>{local:e2e("head", /table/row[1]/head),
for $row in /table/row
return
(
<r>{local:e2e("c", $row/c)}</r>),
local:e2e("tail", /table/row[1]/tail)}</a>)",
        "<a><head>H1</head><r><c>1</c></r><r><c>2</c></r><tail>T1</tail></a>"},
       {{"gt", "e2e/2"},
        R"(<a>{
(let $rows := /table/row
for $row in $rows
return
(

if ($row is $rows[1]) then
   local:e2e("head", $row/head)
else
   (),
<r>{local:e2e("c", $row/c)}</r>),
(
if ($row is $rows[last()]) then
   local:e2e("tail", $row/tail)
else
   ()))}</a>)",
        ""}},

      {"ElementsBeforeTheRowInTheRoot",
       rowInRoot,
       {{"/a/head", "head"}, {"/a/r/c", "c"}},
       "<table><row><head>H1</head><c>1</c></row><row><head>H2</head><c>2</c></row></table>",
       {{"gt", "e2e/2"},
        R"(<a>{local:e2e("head", /table/row[1]/head),
for $row in /table/row
return
(
<r>{local:e2e("c", $row/c)}</r>)}</a>)",
        "<a><head>H1</head><r><c>1</c></r><r><c>2</c></r></a>"},
       {{"gt", "e2e/2"},
        R"(<a>{
(let $rows := /table/row
for $row in $rows
return
(

if ($row is $rows[1]) then
   local:e2e("head", $row/head)
else
   (),
<r>{local:e2e("c", $row/c)}</r>))}</a>)",
        "<a><head>H1</head><r><c>1</c></r><r><c>2</c></r></a>"}},

      {"ElementsFurtherUp",
       rowBelowElements,
       {{"/a/dept/head", "head"}, {"/a/dept/team/r/c", "c"}, {"/a/dept/tail", "tail"}},
       "<table><row><head>H1</head><c>1</c><tail>T1</tail></row>"
       "<row><head>H2</head><c>2</c><tail>T2</tail></row></table>",
       {{"gt", "e2e/2", "e2ec/2"},
        R"(<a>{local:e2ec("dept", (local:e2e("head", /table/row[1]/head),
local:e2ec("team", (for $row in /table/row
return
(
<r>{local:e2e("c", $row/c)}</r>))),
local:e2e("tail", /table/row[1]/tail)))}</a>)",
        "<a><dept><head>H1</head><team><r><c>1</c></r><r><c>2</c></r></team><tail>T1</tail></dept></a>"},
       {{"gt", "e2e/2", "e2ec/2"},
        R"(<a>{local:e2ec("dept", (local:e2e("head", /table/row[1]/head),
local:e2ec("team", )"
        "\n"
        R"((let $rows := /table/row
for $row in $rows
return
(
(<r>{local:e2e("c", $row/c)}</r>)))),
local:e2e("tail", /table/row[last()]/tail)))}</a>)",
        "<a><dept><head>H1</head><team><r><c>1</c></r><r><c>2</c></r></team><tail>T2</tail></dept></a>"}},

      {"ElementsFurtherUpInAGroup",
       rowBelowElements,
       {{"/a/dept/@id", "id", 1}, {"/a/dept/head", "head"}, {"/a/dept/team/r/c", "c"}, {"/a/dept/tail", "tail"}},
       "<table><row><id>1</id><head>H1</head><c>a</c><tail>T1</tail></row>"
       "<row><id>2</id><head>H2</head><c>b</c><tail>T2</tail></row>"
       "<row><id>1</id><head>H3</head><c>c</c><tail>T3</tail></row></table>",
       {{"gt", "e2e/2", "e2ec_nac", "e2ec/2", "ma"},
        R"(<a>{local:e2ec_nac("dept", (local:ma("id", /table/row[1]/id)),
  (local:e2e("head", /table/row[1]/head),
local:e2ec("team", (for $row in /table/row
return
(
<r>{local:e2e("c", $row/c)}</r>))),
local:e2e("tail", /table/row[1]/tail)))}</a>)",
        R"(<a><dept id="1"><head>H1</head><team><r><c>a</c></r><r><c>b</c></r><r><c>c</c></r></team>)"
        R"(<tail>T1</tail></dept></a>)"},
       {{"gt", "e2e/2", "e2ec_nac", "e2ec/2", "msa"},
        R"(<a>{for $id in distinct-values(/table/row/id)
return
(local:e2ec_nac("dept", (local:msa("id", $id)),
  (local:e2e("head", /table/row[id = $id][1]/head),
local:e2ec("team", )"
        "\n"
        R"((let $rows := /table/row[id = $id]
for $row in $rows
return
(
(<r>{local:e2e("c", $row/c)}</r>)))),
local:e2e("tail", /table/row[id = $id][last()]/tail))))}</a>)",
        R"(<a><dept id="1"><head>H1</head><team><r><c>a</c></r><r><c>c</c></r></team><tail>T3</tail></dept>)"
        R"(<dept id="2"><head>H2</head><team><r><c>b</c></r></team><tail>T2</tail></dept></a>)"}},

      // With grouping the comma before the first child stands in the row loop, where nothing precedes it.
      {"RootWithText",
       rowInRoot,
       {{"/a", "t"}, {"/a/r/c", "c"}},
       "<table><row><t>T1</t><c>1</c></row><row><t>T2</t><c>2</c></row></table>",
       {{"gt", "e2e/2"},
        R"(<a>{local:gt(/table/row[1]/t),
for $row in /table/row
return
(
<r>{local:e2e("c", $row/c)}</r>)}</a>)",
        "<a>T1<r><c>1</c></r><r><c>2</c></r></a>"},
       {{"gt", "e2e/2"},
        R"(<a>{local:gt(/table/row[1]/t),
(let $rows := /table/row
for $row in $rows
return
(
,
<r>{local:e2e("c", $row/c)}</r>))}</a>)",
        ""}},

      // Namespaces

      {"PrefixedNames",
       R"(<xdm version="1.0"><element name="a"><namespace prefix="p" uri="urn:p"/>
<element name="r" prefix="p" decides="true"><attribute name="k" prefix="p"/><element name="c1" prefix="p"/></element>
</element></xdm>)",
       {{"/a/p:r/@p:k", "k"}, {"/a/p:r/p:c1", "c1"}},
       "<table><row><k>1</k><c1>x</c1></row></table>",
       {{"gt", "e2e/2"},
        R"(<a>{for $row in /table/row
return
(
<p:r   p:k="{local:gt($row/k)}">{local:e2e("p:c1", $row/c1)}</p:r>)}</a>)",
        R"(<a><p:r xmlns:p="urn:p" p:k="1"><p:c1>x</p:c1></p:r></a>)"},
       {{"gt", "e2e/2"},
        R"(<a>{
(let $rows := /table/row
for $row in $rows
return
(
<p:r   p:k="{local:gt($row/k)}">{local:e2e("p:c1", $row/c1)}</p:r>))}</a>)",
        R"(<a><p:r xmlns:p="urn:p" p:k="1"><p:c1>x</p:c1></p:r></a>)"},
       "\n\ndeclare namespace p = \"urn:p\";\n"},

      {"DefaultNamespace",
       R"(<xdm version="1.0"><element name="a" prefix=""><namespace prefix="" uri="urn:d"/><element name="r" prefix=""
decides="true"><attribute name="k"/><element name="c1" prefix=""/></element></element></xdm>)",
       {{"/a/r/@k", "k"}, {"/a/r/c1", "c1"}},
       R"(<table xmlns="urn:d"><row><k>1</k><c1>x</c1></row></table>)",
       {{"gt", "e2e/2"},
        R"(<a>{for $row in /table/row
return
(
<r   k="{local:gt($row/k)}">{local:e2e("c1", $row/c1)}</r>)}</a>)",
        R"(<a xmlns="urn:d"><r k="1"><c1>x</c1></r></a>)"},
       {{"gt", "e2e/2"},
        R"(<a>{
(let $rows := /table/row
for $row in $rows
return
(
<r   k="{local:gt($row/k)}">{local:e2e("c1", $row/c1)}</r>))}</a>)",
        R"(<a xmlns="urn:d"><r k="1"><c1>x</c1></r></a>)"},
       "\n\ndeclare default element namespace \"urn:d\";\n"},

      // Steps that columns spell in their own way

      {"ElementWithTwoSteps",
       R"(<xdm version="1.0"><element name="a"><element name="r" decides="true"><element name="b"><element name="x"/>
<element name="y"/></element></element></element></xdm>)",
       {{"/a/r/b/x", "x", 0, "/a/r/b[1]/x"}, {"/a/r/b/y", "y", 0, "/a/r/b[2]/y"}},
       "<table><row><x>1</x><y>2</y></row></table>",
       {{"gt", "e2e/2", "e2ec/2"},
        R"(<a>{for $row in /table/row
return
(
<r>{local:e2ec("b", (local:e2e("x", $row/x))),
local:e2ec("b", (local:e2e("y", $row/y)))}</r>)}</a>)",
        "<a><r><b><x>1</x></b><b><y>2</y></b></r></a>"},
       {{"gt", "e2e/2", "e2ec/2"},
        R"(<a>{
(let $rows := /table/row
for $row in $rows
return
(
<r>{local:e2ec("b", (local:e2e("x", $row/x))),
local:e2ec("b", (local:e2e("y", $row/y)))}</r>))}</a>)",
        "<a><r><b><x>1</x></b><b><y>2</y></b></r></a>"}},

      // A constructor is opened and closed once, whatever the number of its steps.
      {"RowWithTwoSteps",
       rowInRoot,
       {{"/a/r/x", "x", 0, "/a/r[1]/x"}, {"/a/r/c", "c", 0, "/a/r[2]/c"}},
       "<table><row><x>1</x><c>2</c></row></table>",
       {{"gt", "e2e/2"},
        R"(<a>{for $row in /table/row
return
(
<r>{local:e2e("x", $row/x),
>{local:e2e("c", $row/c)}</r>)}</a>)",
        ""},
       {{"gt", "e2e/2"},
        R"(<a>{
(let $rows := /table/row
for $row in $rows
return
(
<r>{local:e2e("x", $row/x),
>{local:e2e("c", $row/c)}</r>))}</a>)",
        ""}},

      {"OneFunctionWithoutLocalGt",
       R"(<xdm version="1.0"><element name="a"><element name="b"><element name="r" decides="true"><element name="c"/>
</element></element></element></xdm>)",
       {{"/a/b/r", "r", 0, "/a/b/r/c"}},
       "<table><row><r>1</r></row><row><r>2</r></row></table>",
       {{"e2ec/2"},
        R"(<a>{local:e2ec("b", (for $row in /table/row
return
(
<r/>)))}</a>)",
        "<a><b><r/><r/></b></a>"},
       {{"e2ec/2"},
        R"(<a>{local:e2ec("b", )"
        "\n"
        R"((let $rows := /table/row
for $row in $rows
return
(
(<r/>))))}</a>)",
        "<a><b><r/><r/></b></a>"}},

      {"NoFunction",
       R"(<xdm version="1.0"><element name="a"><element name="c"/></element></xdm>)",
       {{"/a", "a", 0, "/a/c"}},
       "<table><row><a>1</a></row></table>",
       {{}, "<a/>", "<a/>"},
       {{}, "<a/>", "<a/>"}},

      {"NothingInsideTheRoot",
       R"(<xdm version="1.0"><element name="a"><element name="c"/></element></xdm>)",
       {{"/a/c", "c", 0, "/a"}},
       "<table><row><c>1</c></row></table>",
       {{}, "<a}</a>", ""},
       {{}, "<a}</a>", ""}},

      // Attributes of the root

      {"ConstantRootAttributes",
       R"(<xdm version="1.0"><element name="a"><attribute name="v"/><attribute name="d"/><attribute name="s"/>
<attribute name="b"/><attribute name="n"/><element name="r" decides="true"><element name="c"/></element></element>
</xdm>)",
       {{"/a/r/c", "c"}},
       "<table><row><c>1</c></row></table>",
       {{"gt", "e2e/2"},
        R"(<a   v="1.0"   d='say "hi"'   s="it's"   b="&quot;it's&quot;">{for $row in /table/row
return
(
<r>{local:e2e("c", $row/c)}</r>)}</a>)",
        R"(<a v="1.0" d='say "hi"' s="it's" b="&quot;it's&quot;"><r><c>1</c></r></a>)"},
       {{"gt", "e2e/2"},
        R"(<a   v="1.0"   d='say "hi"'   s="it's"   b="&quot;it's&quot;">{
(let $rows := /table/row
for $row in $rows
return
(
<r>{local:e2e("c", $row/c)}</r>))}</a>)",
        R"(<a v="1.0" d='say "hi"' s="it's" b="&quot;it's&quot;"><r><c>1</c></r></a>)"},
       "",
       false,
       {{"/a/@v", "1.0"}, {"/a/@d", R"(say "hi")"}, {"/a/@s", "it's"}, {"/a/@b", R"("it's")"}}},

      {"SelectedRootAttribute",
       rowInRoot,
       {{"/a/@k", "k"}, {"/a/r/c", "c"}},
       "<table><row><k>1</k><c>x</c></row><row><k>2</k><c>y</c></row></table>",
       {{"gt", "e2e/2"},
        R"(<a   k="{local:gt(/table/row[1]/k)}">{for $row in /table/row
return
(
<r>{local:e2e("c", $row/c)}</r>)}</a>)",
        R"(<a k="1"><r><c>x</c></r><r><c>y</c></r></a>)"},
       {{"gt", "e2e/2"},
        R"(<a   k="{local:gt(/table/row[1]/k)}">{
(let $rows := /table/row
for $row in $rows
return
(
<r>{local:e2e("c", $row/c)}</r>))}</a>)",
        R"(<a k="1"><r><c>x</c></r><r><c>y</c></r></a>)"},
       "",
       false,
       {{"/a/@k", "not used"}}},
  };
  return shapes;
}

#endif

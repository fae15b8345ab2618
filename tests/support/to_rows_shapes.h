// The shapes of XML-to-rows queries: a model, the choice of columns, the whole query text, and the rows that it gives.
// Used by tests/unit/kvxdmxqy_to_rows_test.cpp and tests/processor/kvxdmxqy_to_rows_run_test.cpp.
#ifndef KVXDM_TESTS_TO_ROWS_SHAPES_H
#define KVXDM_TESTS_TO_ROWS_SHAPES_H

#include <ostream>
#include <string>
#include <vector>

#include "xquery.h"

struct ChosenColumn {
  const char* xpath;
  const char* name;
  const char* ownXPath = "";
};

struct ToRowsArguments {
  bool streaming;
  bool sequenceArgument;
  bool relativeLets;
  bool keepWhitespace;
};

struct ToRowsShape {
  const char* name;
  const char* model;  // an XDM document
  const char* row;    // the XPath of the element that decides the row
  std::vector<ChosenColumn> columns;
  ToRowsArguments arguments;
  bool collection;  // the query reads the collection named by $KV_BENCH
  const char* query;
  const char* document;
  Rows rows;
  const char* processorError;  // the error with which processors refuse the text; empty when they run it
};

inline std::ostream& operator<<(std::ostream& stream, const ToRowsShape& shape) { return stream << shape.name; }

constexpr char oneRowBelowB[] = R"(<xdm version="1.0">
  <element name="a"><element name="b"><attribute name="k"/>
    <element name="r"><element name="c1"/></element></element></element></xdm>)";

constexpr char placesAroundTheRow[] = R"(<xdm version="1.0">
  <element name="a"><element name="h"/><element name="b"><attribute name="k"/>
    <element name="r"><attribute name="id"/><element name="c1"/>
      <element name="d"><attribute name="f"/><element name="e"/></element></element></element></element></xdm>)";

constexpr char fourLevels[] = R"(<xdm version="1.0">
  <element name="a"><attribute name="v"/><element name="b"><element name="c"><element name="d">
    <element name="e"/></element></element></element></element></xdm>)";

constexpr char namespaces[] = R"(<xdm version="1.0">
  <element name="a" prefix=""><namespace prefix="" uri="urn:d"/><namespace prefix="p" uri="urn:p"/>
    <attribute name="v"/><element name="b" prefix="p"><attribute name="k" prefix="p"/>
      <element name="c" prefix=""/></element></element></xdm>)";

inline const std::vector<ToRowsShape>& toRowsShapes() {
  static const std::vector<ToRowsShape> shapes = {
      {"ArgumentsNoStreamingNoSequenceNoRelativeNoKeepWhitespace",
       oneRowBelowB,
       "/a/b/r",
       {{"/a/b/r/c1", "c1"}, {"/a/b/@k", "k"}},
       {false, false, false, false},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;
declare option ddtek:xml-streaming "no";


declare function local:gt(
   $element as element()?)
   as xs:string
{
   fn:normalize-space(string-join($element/text(), ""))
};

<table>
{
let $k := /a/b/@k
for $row in /a/b/r
return
(
<row><c1>{local:gt($row/c1)}</c1><k>{string($k)}</k>
</row>
)
}
</table>)",
       R"(<a><b k="K1"><r><c1> x  y </c1></r><r><c1>z</c1></r></b></a>)",
       {{{"c1", "x y"}, {"k", "K1"}}, {{"c1", "z"}, {"k", "K1"}}},
       "XPST0081"},
      {"ArgumentsNoStreamingNoSequenceNoRelativeKeepWhitespace",
       oneRowBelowB,
       "/a/b/r",
       {{"/a/b/r/c1", "c1"}, {"/a/b/@k", "k"}},
       {false, false, false, true},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;
declare option ddtek:xml-streaming "no";


declare function local:gt(
   $element as element()?)
   as xs:string
{
   fn:string-join($element/text(), "")
};

<table>
{
let $k := /a/b/@k
for $row in /a/b/r
return
(
<row><c1>{local:gt($row/c1)}</c1><k>{string($k)}</k>
</row>
)
}
</table>)",
       R"(<a><b k="K1"><r><c1> x  y </c1></r><r><c1>z</c1></r></b></a>)",
       {{{"c1", " x  y "}, {"k", "K1"}}, {{"c1", "z"}, {"k", "K1"}}},
       "XPST0081"},
      {"ArgumentsNoStreamingNoSequenceRelativeNoKeepWhitespace",
       oneRowBelowB,
       "/a/b/r",
       {{"/a/b/r/c1", "c1"}, {"/a/b/@k", "k"}},
       {false, false, true, false},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;
declare option ddtek:xml-streaming "no";


declare function local:gt(
   $element as element()?)
   as xs:string
{
   fn:normalize-space(string-join($element/text(), ""))
};

<table>
{
for $row in /a/b/r
let $k := $row/parent::*/@k
return
(
<row><c1>{local:gt($row/c1)}</c1><k>{string($k)}</k>
</row>
)
}
</table>)",
       R"(<a><b k="K1"><r><c1> x  y </c1></r><r><c1>z</c1></r></b></a>)",
       {{{"c1", "x y"}, {"k", "K1"}}, {{"c1", "z"}, {"k", "K1"}}},
       "XPST0081"},
      {"ArgumentsNoStreamingNoSequenceRelativeKeepWhitespace",
       oneRowBelowB,
       "/a/b/r",
       {{"/a/b/r/c1", "c1"}, {"/a/b/@k", "k"}},
       {false, false, true, true},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;
declare option ddtek:xml-streaming "no";


declare function local:gt(
   $element as element()?)
   as xs:string
{
   fn:string-join($element/text(), "")
};

<table>
{
for $row in /a/b/r
let $k := $row/parent::*/@k
return
(
<row><c1>{local:gt($row/c1)}</c1><k>{string($k)}</k>
</row>
)
}
</table>)",
       R"(<a><b k="K1"><r><c1> x  y </c1></r><r><c1>z</c1></r></b></a>)",
       {{{"c1", " x  y "}, {"k", "K1"}}, {{"c1", "z"}, {"k", "K1"}}},
       "XPST0081"},
      {"ArgumentsNoStreamingSequenceNoRelativeNoKeepWhitespace",
       oneRowBelowB,
       "/a/b/r",
       {{"/a/b/r/c1", "c1"}, {"/a/b/@k", "k"}},
       {false, true, false, false},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;
declare option ddtek:xml-streaming "no";


declare function local:gt(
   $element as element()*)
   as xs:string
{
   fn:normalize-space(string-join($element/text(), ""))
};

<table>
{
let $k := /a/b/@k
for $row in /a/b/r
return
(
<row><c1>{local:gt($row/c1)}</c1><k>{string($k)}</k>
</row>
)
}
</table>)",
       R"(<a><b k="K1"><r><c1> x  y </c1></r><r><c1>z</c1></r></b></a>)",
       {{{"c1", "x y"}, {"k", "K1"}}, {{"c1", "z"}, {"k", "K1"}}},
       "XPST0081"},
      {"ArgumentsNoStreamingSequenceNoRelativeKeepWhitespace",
       oneRowBelowB,
       "/a/b/r",
       {{"/a/b/r/c1", "c1"}, {"/a/b/@k", "k"}},
       {false, true, false, true},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;
declare option ddtek:xml-streaming "no";


declare function local:gt(
   $element as element()*)
   as xs:string
{
   fn:string-join($element/text(), "")
};

<table>
{
let $k := /a/b/@k
for $row in /a/b/r
return
(
<row><c1>{local:gt($row/c1)}</c1><k>{string($k)}</k>
</row>
)
}
</table>)",
       R"(<a><b k="K1"><r><c1> x  y </c1></r><r><c1>z</c1></r></b></a>)",
       {{{"c1", " x  y "}, {"k", "K1"}}, {{"c1", "z"}, {"k", "K1"}}},
       "XPST0081"},
      {"ArgumentsNoStreamingSequenceRelativeNoKeepWhitespace",
       oneRowBelowB,
       "/a/b/r",
       {{"/a/b/r/c1", "c1"}, {"/a/b/@k", "k"}},
       {false, true, true, false},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;
declare option ddtek:xml-streaming "no";


declare function local:gt(
   $element as element()*)
   as xs:string
{
   fn:normalize-space(string-join($element/text(), ""))
};

<table>
{
for $row in /a/b/r
let $k := $row/parent::*/@k
return
(
<row><c1>{local:gt($row/c1)}</c1><k>{string($k)}</k>
</row>
)
}
</table>)",
       R"(<a><b k="K1"><r><c1> x  y </c1></r><r><c1>z</c1></r></b></a>)",
       {{{"c1", "x y"}, {"k", "K1"}}, {{"c1", "z"}, {"k", "K1"}}},
       "XPST0081"},
      {"ArgumentsNoStreamingSequenceRelativeKeepWhitespace",
       oneRowBelowB,
       "/a/b/r",
       {{"/a/b/r/c1", "c1"}, {"/a/b/@k", "k"}},
       {false, true, true, true},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;
declare option ddtek:xml-streaming "no";


declare function local:gt(
   $element as element()*)
   as xs:string
{
   fn:string-join($element/text(), "")
};

<table>
{
for $row in /a/b/r
let $k := $row/parent::*/@k
return
(
<row><c1>{local:gt($row/c1)}</c1><k>{string($k)}</k>
</row>
)
}
</table>)",
       R"(<a><b k="K1"><r><c1> x  y </c1></r><r><c1>z</c1></r></b></a>)",
       {{{"c1", " x  y "}, {"k", "K1"}}, {{"c1", "z"}, {"k", "K1"}}},
       "XPST0081"},
      {"ArgumentsStreamingNoSequenceNoRelativeNoKeepWhitespace",
       oneRowBelowB,
       "/a/b/r",
       {{"/a/b/r/c1", "c1"}, {"/a/b/@k", "k"}},
       {true, false, false, false},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;


declare function local:gt(
   $element as element()?)
   as xs:string
{
   fn:normalize-space(string-join($element/text(), ""))
};

<table>
{
let $k := /a/b/@k
for $row in /a/b/r
return
(
<row><c1>{local:gt($row/c1)}</c1><k>{string($k)}</k>
</row>
)
}
</table>)",
       R"(<a><b k="K1"><r><c1> x  y </c1></r><r><c1>z</c1></r></b></a>)",
       {{{"c1", "x y"}, {"k", "K1"}}, {{"c1", "z"}, {"k", "K1"}}},
       ""},
      {"ArgumentsStreamingNoSequenceNoRelativeKeepWhitespace",
       oneRowBelowB,
       "/a/b/r",
       {{"/a/b/r/c1", "c1"}, {"/a/b/@k", "k"}},
       {true, false, false, true},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;


declare function local:gt(
   $element as element()?)
   as xs:string
{
   fn:string-join($element/text(), "")
};

<table>
{
let $k := /a/b/@k
for $row in /a/b/r
return
(
<row><c1>{local:gt($row/c1)}</c1><k>{string($k)}</k>
</row>
)
}
</table>)",
       R"(<a><b k="K1"><r><c1> x  y </c1></r><r><c1>z</c1></r></b></a>)",
       {{{"c1", " x  y "}, {"k", "K1"}}, {{"c1", "z"}, {"k", "K1"}}},
       ""},
      {"ArgumentsStreamingNoSequenceRelativeNoKeepWhitespace",
       oneRowBelowB,
       "/a/b/r",
       {{"/a/b/r/c1", "c1"}, {"/a/b/@k", "k"}},
       {true, false, true, false},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;


declare function local:gt(
   $element as element()?)
   as xs:string
{
   fn:normalize-space(string-join($element/text(), ""))
};

<table>
{
for $row in /a/b/r
let $k := $row/parent::*/@k
return
(
<row><c1>{local:gt($row/c1)}</c1><k>{string($k)}</k>
</row>
)
}
</table>)",
       R"(<a><b k="K1"><r><c1> x  y </c1></r><r><c1>z</c1></r></b></a>)",
       {{{"c1", "x y"}, {"k", "K1"}}, {{"c1", "z"}, {"k", "K1"}}},
       ""},
      {"ArgumentsStreamingNoSequenceRelativeKeepWhitespace",
       oneRowBelowB,
       "/a/b/r",
       {{"/a/b/r/c1", "c1"}, {"/a/b/@k", "k"}},
       {true, false, true, true},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;


declare function local:gt(
   $element as element()?)
   as xs:string
{
   fn:string-join($element/text(), "")
};

<table>
{
for $row in /a/b/r
let $k := $row/parent::*/@k
return
(
<row><c1>{local:gt($row/c1)}</c1><k>{string($k)}</k>
</row>
)
}
</table>)",
       R"(<a><b k="K1"><r><c1> x  y </c1></r><r><c1>z</c1></r></b></a>)",
       {{{"c1", " x  y "}, {"k", "K1"}}, {{"c1", "z"}, {"k", "K1"}}},
       ""},
      {"ArgumentsStreamingSequenceNoRelativeNoKeepWhitespace",
       oneRowBelowB,
       "/a/b/r",
       {{"/a/b/r/c1", "c1"}, {"/a/b/@k", "k"}},
       {true, true, false, false},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;


declare function local:gt(
   $element as element()*)
   as xs:string
{
   fn:normalize-space(string-join($element/text(), ""))
};

<table>
{
let $k := /a/b/@k
for $row in /a/b/r
return
(
<row><c1>{local:gt($row/c1)}</c1><k>{string($k)}</k>
</row>
)
}
</table>)",
       R"(<a><b k="K1"><r><c1> x  y </c1></r><r><c1>z</c1></r></b></a>)",
       {{{"c1", "x y"}, {"k", "K1"}}, {{"c1", "z"}, {"k", "K1"}}},
       ""},
      {"ArgumentsStreamingSequenceNoRelativeKeepWhitespace",
       oneRowBelowB,
       "/a/b/r",
       {{"/a/b/r/c1", "c1"}, {"/a/b/@k", "k"}},
       {true, true, false, true},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;


declare function local:gt(
   $element as element()*)
   as xs:string
{
   fn:string-join($element/text(), "")
};

<table>
{
let $k := /a/b/@k
for $row in /a/b/r
return
(
<row><c1>{local:gt($row/c1)}</c1><k>{string($k)}</k>
</row>
)
}
</table>)",
       R"(<a><b k="K1"><r><c1> x  y </c1></r><r><c1>z</c1></r></b></a>)",
       {{{"c1", " x  y "}, {"k", "K1"}}, {{"c1", "z"}, {"k", "K1"}}},
       ""},
      {"ArgumentsStreamingSequenceRelativeNoKeepWhitespace",
       oneRowBelowB,
       "/a/b/r",
       {{"/a/b/r/c1", "c1"}, {"/a/b/@k", "k"}},
       {true, true, true, false},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;


declare function local:gt(
   $element as element()*)
   as xs:string
{
   fn:normalize-space(string-join($element/text(), ""))
};

<table>
{
for $row in /a/b/r
let $k := $row/parent::*/@k
return
(
<row><c1>{local:gt($row/c1)}</c1><k>{string($k)}</k>
</row>
)
}
</table>)",
       R"(<a><b k="K1"><r><c1> x  y </c1></r><r><c1>z</c1></r></b></a>)",
       {{{"c1", "x y"}, {"k", "K1"}}, {{"c1", "z"}, {"k", "K1"}}},
       ""},
      {"ArgumentsStreamingSequenceRelativeKeepWhitespace",
       oneRowBelowB,
       "/a/b/r",
       {{"/a/b/r/c1", "c1"}, {"/a/b/@k", "k"}},
       {true, true, true, true},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;


declare function local:gt(
   $element as element()*)
   as xs:string
{
   fn:string-join($element/text(), "")
};

<table>
{
for $row in /a/b/r
let $k := $row/parent::*/@k
return
(
<row><c1>{local:gt($row/c1)}</c1><k>{string($k)}</k>
</row>
)
}
</table>)",
       R"(<a><b k="K1"><r><c1> x  y </c1></r><r><c1>z</c1></r></b></a>)",
       {{{"c1", " x  y "}, {"k", "K1"}}, {{"c1", "z"}, {"k", "K1"}}},
       ""},
      {"SeveralParentsOfRows",
       oneRowBelowB,
       "/a/b/r",
       {{"/a/b/r/c1", "c1"}, {"/a/b/@k", "k"}},
       {true, false, true, false},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;


declare function local:gt(
   $element as element()?)
   as xs:string
{
   fn:normalize-space(string-join($element/text(), ""))
};

<table>
{
for $row in /a/b/r
let $k := $row/parent::*/@k
return
(
<row><c1>{local:gt($row/c1)}</c1><k>{string($k)}</k>
</row>
)
}
</table>)",
       R"(<a><b k="K1"><r><c1>1</c1></r><r/></b><b><r><c1>3<d>no</d>4</c1></r></b></a>)",
       {{{"c1", "1"}, {"k", "K1"}}, {{"c1", ""}, {"k", "K1"}}, {{"c1", "34"}, {"k", ""}}},
       ""},
      {"NoElementColumnNeedsNoFunction",
       oneRowBelowB,
       "/a/b/r",
       {{"/a/b/@k", "k"}},
       {true, false, true, false},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;

<table>
{
for $row in /a/b/r
let $k := $row/parent::*/@k
return
(
<row><k>{string($k)}</k>
</row>
)
}
</table>)",
       R"(<a><b k="K1"><r/><r/></b></a>)",
       {{{"k", "K1"}}, {{"k", "K1"}}},
       ""},
      {"SequenceArgumentJoinsRepeatedElements",
       oneRowBelowB,
       "/a/b/r",
       {{"/a/b/r/c1", "c1"}},
       {true, true, true, false},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;


declare function local:gt(
   $element as element()*)
   as xs:string
{
   fn:normalize-space(string-join($element/text(), ""))
};

<table>
{
for $row in /a/b/r
return
(
<row><c1>{local:gt($row/c1)}</c1>
</row>
)
}
</table>)",
       R"(<a><b><r><c1>1</c1><c1>2</c1></r></b></a>)",
       {{{"c1", "12"}}},
       ""},
      {"SingleArgumentRefusesRepeatedElements",
       oneRowBelowB,
       "/a/b/r",
       {{"/a/b/r/c1", "c1"}},
       {true, false, true, false},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;


declare function local:gt(
   $element as element()?)
   as xs:string
{
   fn:normalize-space(string-join($element/text(), ""))
};

<table>
{
for $row in /a/b/r
return
(
<row><c1>{local:gt($row/c1)}</c1>
</row>
)
}
</table>)",
       R"(<a><b><r><c1>1</c1><c1>2</c1></r></b></a>)",
       {},
       "XPTY0004"},
      {"CollectionVariable",
       oneRowBelowB,
       "/a/b/r",
       {{"/a/b/r/c1", "c1"}, {"/a/b/@k", "k"}},
       {true, false, true, false},
       true,
       R"(xquery version "1.0";
declare boundary-space preserve;

declare variable $KV_BENCH as xs:string external;

declare function local:gt(
   $element as element()?)
   as xs:string
{
   fn:normalize-space(string-join($element/text(), ""))
};

<table>
{
for $row in collection($KV_BENCH)/a/b/r
let $k := $row/parent::*/@k
return
(
<row><c1>{local:gt($row/c1)}</c1><k>{string($k)}</k>
</row>
)
}
</table>)",
       R"(<a><b k="K1"><r><c1> x  y </c1></r><r><c1>z</c1></r></b></a>)",
       {{{"c1", "x y"}, {"k", "K1"}}, {{"c1", "z"}, {"k", "K1"}}},
       ""},
      // The absolute path has no document to start from when only the collection is given.
      {"AbsoluteLetsAreNotReadFromTheCollection",
       oneRowBelowB,
       "/a/b/r",
       {{"/a/b/r/c1", "c1"}, {"/a/b/@k", "k"}},
       {true, false, false, false},
       true,
       R"(xquery version "1.0";
declare boundary-space preserve;

declare variable $KV_BENCH as xs:string external;

declare function local:gt(
   $element as element()?)
   as xs:string
{
   fn:normalize-space(string-join($element/text(), ""))
};

<table>
{
let $k := /a/b/@k
for $row in collection($KV_BENCH)/a/b/r
return
(
<row><c1>{local:gt($row/c1)}</c1><k>{string($k)}</k>
</row>
)
}
</table>)",
       R"(<a><b k="K1"><r><c1> x  y </c1></r><r><c1>z</c1></r></b></a>)",
       {},
       "XPDY0002"},
      {"ColumnsOnAboveBelowAndBesideTheRow",
       placesAroundTheRow,
       "/a/b/r",
       {{"/a/h", "h"},
        {"/a/b/@k", "k"},
        {"/a/b/r", "own"},
        {"/a/b/r/@id", "id"},
        {"/a/b/r/c1", "c1"},
        {"/a/b/r/d/e", "e"},
        {"/a/b/r/d/@f", "f"},
        {"/a/b", "b"}},
       {true, false, true, false},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;


declare function local:gt(
   $element as element()?)
   as xs:string
{
   fn:normalize-space(string-join($element/text(), ""))
};

<table>
{
for $row in /a/b/r
let $h := $row/parent::*/parent::*/h
let $k := $row/parent::*/@k
let $b := $row/parent::*
return
(
<row><h>{local:gt($h)}</h><k>{string($k)}</k><own>{local:gt($row)}</own><id>{string($row/@id)}</id><c1>{local:gt($row/c1)}</c1><e>{local:gt($row/d/e)}</e><f>{string($row/d/@f)}</f><b>{local:gt($b)}</b>
</row>
)
}
</table>)",
       R"(<a><h>H</h><b k="K">text<r id=" 1 ">own<c1>C</c1><d f="F"><e>E</e></d></r></b></a>)",
       {{{"h", "H"}, {"k", "K"}, {"own", "own"}, {"id", " 1 "}, {"c1", "C"}, {"e", "E"}, {"f", "F"}, {"b", "text"}}},
       ""},
      {"AbsoluteLetsForPlacesAroundTheRow",
       placesAroundTheRow,
       "/a/b/r",
       {{"/a/h", "h"}, {"/a/b/@k", "k"}, {"/a/b/r/@id", "id"}},
       {true, false, false, false},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;


declare function local:gt(
   $element as element()?)
   as xs:string
{
   fn:normalize-space(string-join($element/text(), ""))
};

<table>
{
let $h := /a/h
let $k := /a/b/@k
for $row in /a/b/r
return
(
<row><h>{local:gt($h)}</h><k>{string($k)}</k><id>{string($row/@id)}</id>
</row>
)
}
</table>)",
       R"(<a><h>H</h><b k="K"><r id="1"/><r id="2"/></b></a>)",
       {{{"h", "H"}, {"k", "K"}, {"id", "1"}}, {{"h", "H"}, {"k", "K"}, {"id", "2"}}},
       ""},
      {"ThreeParentSteps",
       fourLevels,
       "/a/b/c/d",
       {{"/a/@v", "v"}, {"/a/b/c/d/e", "e"}},
       {true, false, true, false},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;


declare function local:gt(
   $element as element()?)
   as xs:string
{
   fn:normalize-space(string-join($element/text(), ""))
};

<table>
{
for $row in /a/b/c/d
let $v := $row/parent::*/parent::*/parent::*/@v
return
(
<row><v>{string($v)}</v><e>{local:gt($row/e)}</e>
</row>
)
}
</table>)",
       R"(<a v="V"><b><c><d><e>1</e></d></c></b><b><c><d><e>2</e></d></c></b></a>)",
       {{{"v", "V"}, {"e", "1"}}, {{"v", "V"}, {"e", "2"}}},
       ""},
      {"RootDecidesTheRow",
       fourLevels,
       "/a",
       {{"/a/@v", "v"}, {"/a/b/c/d/e", "e"}},
       {true, false, true, false},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;


declare function local:gt(
   $element as element()?)
   as xs:string
{
   fn:normalize-space(string-join($element/text(), ""))
};

<table>
{
for $row in /a
return
(
<row><v>{string($row/@v)}</v><e>{local:gt($row/b/c/d/e)}</e>
</row>
)
}
</table>)",
       R"(<a v="V"><b><c><d><e>1</e></d></c></b></a>)",
       {{{"v", "V"}, {"e", "1"}}},
       ""},
      {"PrefixedAndDefaultNamespaces",
       namespaces,
       "/a/p:b",
       {{"/a/p:b/@p:k", "k"}, {"/a/p:b/c", "c"}, {"/a/@v", "v"}},
       {true, false, true, false},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;


declare default element namespace "urn:d";
declare namespace p = "urn:p";


declare function local:gt(
   $element as element()?)
   as xs:string
{
   fn:normalize-space(string-join($element/text(), ""))
};

<table>
{
for $row in /a/p:b
let $v := $row/parent::*/@v
return
(
<row><k>{string($row/@p:k)}</k><c>{local:gt($row/c)}</c><v>{string($v)}</v>
</row>
)
}
</table>)",
       R"(<x:a xmlns:x="urn:d" xmlns:y="urn:p" v="V"><y:b y:k="K" k="no"><x:c>C</x:c><c>no</c></y:b><x:b/></x:a>)",
       {{{"k", "K"}, {"c", "C"}, {"v", "V"}}},
       ""},
      {"PrologOptionVariableAndFunctionInOrder",
       namespaces,
       "/a/p:b",
       {{"/a/p:b/c", "c"}},
       {false, true, true, true},
       true,
       R"(xquery version "1.0";
declare boundary-space preserve;


declare default element namespace "urn:d";
declare namespace p = "urn:p";
declare option ddtek:xml-streaming "no";

declare variable $KV_BENCH as xs:string external;

declare function local:gt(
   $element as element()*)
   as xs:string
{
   fn:string-join($element/text(), "")
};

<table>
{
for $row in collection($KV_BENCH)/a/p:b
return
(
<row><c>{local:gt($row/c)}</c>
</row>
)
}
</table>)",
       R"(<a/>)",
       {},
       "XPST0081"},
      {"ColumnWithAnXPathOfItsOwn",
       oneRowBelowB,
       "/a/b/r",
       {{"/a/b/r/c1", "first", "/a/b/r/c1[1]"}, {"/a/b/r/c1", "second", "/a/b/r/c1[2]"}},
       {true, false, true, false},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;


declare function local:gt(
   $element as element()?)
   as xs:string
{
   fn:normalize-space(string-join($element/text(), ""))
};

<table>
{
for $row in /a/b/r
return
(
<row><first>{local:gt($row/c1[1])}</first><second>{local:gt($row/c1[2])}</second>
</row>
)
}
</table>)",
       R"(<a><b><r><c1>1</c1><c1>2</c1></r><r><c1>3</c1></r></b></a>)",
       {{{"first", "1"}, {"second", "2"}}, {{"first", "3"}, {"second", ""}}},
       ""},
      {"ColumnAboveTheRowWithAPredicate",
       oneRowBelowB,
       "/a/b/r",
       {{"/a/b/@k", "k", "/a/b[1]/@k"}},
       {true, false, true, false},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;

<table>
{
for $row in /a/b/r
let $k := $row/parent::*/parent::*/b[1]/@k
return
(
<row><k>{string($k)}</k>
</row>
)
}
</table>)",
       R"(<a><b k="1"/><b k="2"><r/></b></a>)",
       {{{"k", "1"}}},
       ""},
      {"ColumnNamesNotNodeNamesAreWritten",
       oneRowBelowB,
       "/a/b/r",
       {{"/a/b/r/c1", "amount"}, {"/a/b/r/c1", "amount_again"}},
       {true, false, true, false},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;


declare function local:gt(
   $element as element()?)
   as xs:string
{
   fn:normalize-space(string-join($element/text(), ""))
};

<table>
{
for $row in /a/b/r
return
(
<row><amount>{local:gt($row/c1)}</amount><amount_again>{local:gt($row/c1)}</amount_again>
</row>
)
}
</table>)",
       R"(<a><b><r><c1>7</c1></r></b></a>)",
       {{{"amount", "7"}, {"amount_again", "7"}}},
       ""},
      {"NothingIsEscapedOrChecked",
       oneRowBelowB,
       "/a/b/r",
       {{"/a/b/r/c1", "a<b"}},
       {true, false, true, false},
       false,
       R"(xquery version "1.0";
declare boundary-space preserve;


declare function local:gt(
   $element as element()?)
   as xs:string
{
   fn:normalize-space(string-join($element/text(), ""))
};

<table>
{
for $row in /a/b/r
return
(
<row><a<b>{local:gt($row/c1)}</a<b>
</row>
)
}
</table>)",
       R"(<a/>)",
       {},
       "XPST0003"},
  };
  return shapes;
}

#endif

// The rows-to-XML query: its frame, its function library and the loops over group columns.
// Tested by tests/unit/kvxdmxqy_from_rows_test.cpp, tests/unit/kvxdmxqy_library_test.cpp and
// tests/processor/kvxdmxqy_from_rows_run_test.cpp.
#include "kvxdmcol.h"
#include "kvxdmmain.h"
#include "kvxdmxqy_library.h"

namespace {

struct LibraryFunction {
  unsigned request;
  std::string_view text;
};

// They return the empty sequence when there is nothing to build, so that an empty column makes no empty element or
// attribute. local:gt comes first.
constexpr LibraryFunction library[] = {
    {request::gt, R"(

declare function local:gt(
   $element as element()*)
   as xs:string
{
   fn:string-join($element/text(), "")
};
)"},
    {request::e2e_na, R"(

declare function local:e2e_na(
   $name  as xs:string,
   $attrs as attribute()*)
   as element()?
{
   if ($attrs) then
      (
      element {$name}
         {
         $attrs
         }
      )
   else
      ()
};
)"},
    {request::e2e_2, R"(

declare function local:e2e(
   $name    as xs:string,
   $element as element()*)
   as element()?
{
   if ($element/text()) then
      (
      element {$name}
         {
         text{ local:gt($element) }
         }
      )
   else
      ()
};
)"},
    {request::e2e_3, R"(

declare function local:e2e(
   $name    as xs:string,
   $element as element()*,
   $attrs   as attribute()*)
   as element()?
{
   if ($element/text() or $attrs) then
      (
      element {$name}
         {
         $attrs,
         if ($element) then
            (
            text{ local:gt($element) }
            )
         else
            ()
         }
      )
   else
      ()
};
)"},
    {request::e2ec_nac, R"(

declare function local:e2ec_nac(
   $name     as xs:string,
   $attrs    as attribute()*,
   $children as element()*)
   as element()?
{
   if ($children or $attrs) then
      (
      element {$name}
         {
         $attrs,
         for $child in $children
         return ($child)
         }
      )
   else
      ()
};
)"},
    {request::e2ec_2, R"(

declare function local:e2ec(
   $name     as xs:string,
   $children as element()*)
   as element()?
{
   if ($children) then
      (
      element {$name}
         {
         for $child in $children
         return ($child)
         }
      )
   else
      ()
};
)"},
    {request::e2ec_4, R"(

declare function local:e2ec(
   $name     as xs:string,
   $element  as element()*,
   $attrs    as attribute()*,
   $children as element()*)
   as element()?
{
   if ($element/text() or $children or $attrs) then
      (
      element {$name}
         {
         $attrs,
         if ($element) then
            text{ local:gt($element) }
         else
            (),
         for $child in $children
         return ($child)
         }
      )
   else
      ()
};
)"},
    {request::e2ec_3, R"(

declare function local:e2ec(
   $name     as xs:string,
   $element  as element()*,
   $children as element()*)
   as element()?
{
   if ($element/text() or $children) then
      (
      element {$name}
         {
         if ($element) then
            (
            text{ local:gt($element) }
            )
         else
            (),
         for $child in $children
         return ($child)
         }
      )
   else
      ()
};
)"},
    {request::et2ec_4, R"(

declare function local:et2ec(
   $name     as xs:string,
   $text     as text()*,
   $attrs    as attribute()*,
   $children as element()*)
   as element()?
{
   if ($text or $children or $attrs) then
      (
      element {$name}
         {
         $attrs,
         if ($text) then
            ($text)
         else
            (),
         for $child in $children
         return ($child)
         }
      )
   else
      ()
};
)"},
    {request::et2ec_3, R"(

declare function local:et2ec(
   $name     as xs:string,
   $text     as text()*,
   $children as element()*)
   as element()?
{
   if ($text or $children) then
      (
      element {$name}
         {
         if ($text) then
            ($text)
         else
            (),
         for $child in $children
         return ($child)
         }
      )
   else
      ()
};
)"},
    {request::ma, R"(

declare function local:ma(
   $attrName as xs:string,
   $attr     as element()*)
   as attribute()?
{
   if ($attr) then
      (
      let $attrText := local:gt($attr)
      return if ($attrText) then
                attribute {$attrName}
                   {
                   $attrText
                   }
             else
                ()
      )
   else
      ()
};
)"},
    {request::msa, R"(

declare function local:msa(
   $attrName as xs:string,
   $attr     as xs:string)
   as attribute()?
{
   if ($attr) then
      (
      attribute {$attrName}
         {
         $attr
         }
      )
   else
      ()
};
)"},
};

}  // namespace

void declareFunctions(short requested, QueryText& query) {
  auto open = static_cast<unsigned>(requested);
  for (const LibraryFunction& function : library) {
    if (open & function.request) query << function.text;
    open &= ~request::gt;  // declared by now if at all; from here on only the functions' own bits count
  }
}

KvbString XDMMainImpl::genXQueryFromColumns(bool streaming, bool groupRows, KvbString* error) {
  return guarded(this, "(XQuery)", error, KvbString(), [&] {
    if (!markSelected()) {
      *error = errorMessage_;
      return KvbString();
    }
    if (!ancestorsMarked_) {
      reportExhausted("(XQuery)", error);
      return KvbString();
    }
    short functions = 0;
    QueryText body;
    if (!genElementFromColumns(root_, &functions, false, groupRows, "", "/table/row", "", "[1]", body)) {
      return KvbString();
    }
    QueryText head;
    writeQueryHead(head, namespaceProlog_, streaming);
    declareFunctions(functions, head);
    return joined({head.text(), "\n\n", body.text()});
  });
}

void XDMMainImpl::buildGroupForLoop(XDMColumnImpl* column, QueryText& predicate, QueryText& loop, QueryText& closing) {
  if (!column->getIsGroupBy()) return;
  const KvbString& name = column->name();
  loop << "for $" << name << " in distinct-values(/table/row";
  if (!predicate.empty()) loop << "[" << predicate.text() << "]";
  loop << "/" << name << ")\nreturn\n(";

  if (!predicate.empty()) predicate << " and ";
  predicate << name << " = $" << name;
  closing << ")";
}

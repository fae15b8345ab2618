xquery version "1.0";
declare boundary-space preserve;


declare function local:gt(
   $element as element()*)
   as xs:string
{
   fn:string-join($element/text(), "")
};


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


<library>{for $subject in distinct-values(/table/row/subject)
return
(local:e2ec_nac("shelf", (local:msa("subject", $subject)),
(let $rows := /table/row[subject = $subject]
for $row in $rows
return
(
(<book   isbn="{local:gt($row/isbn)}">{local:e2e("title", $row/title)}</book>)))))}</library>

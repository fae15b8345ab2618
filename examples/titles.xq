xquery version "1.0";
declare boundary-space preserve;


declare function local:gt(
   $element as element()?)
   as xs:string
{
   fn:normalize-space(string-join($element/text(), ""))
};

<table>
{
for $row in /library/shelf/book
let $subject := $row/parent::*/@subject
return
(
<row><isbn>{string($row/@isbn)}</isbn><title>{local:gt($row/title)}</title><subject>{string($subject)}</subject>
</row>
)
}
</table>

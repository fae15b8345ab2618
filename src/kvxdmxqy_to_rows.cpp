// The XML-to-rows query: one `row` for each occurrence of the element that decides the row, with one child for each
// selected column.
// Tested by tests/unit/kvxdmxqy_to_rows_test.cpp and tests/processor/kvxdmxqy_to_rows_run_test.cpp.
#include <string_view>

#include "kvxdmcol.h"
#include "kvxdmelem.h"
#include "kvxdmmain.h"
#include "kvxdmxqy_steps.h"
#include "kvxdmxqy_text.h"

namespace {

constexpr char unit[] = "kvxdmxqy";

// local:gt gives the text of an element without that of its descendants, by sequenceArgument and keepWhitespace.
constexpr std::string_view getText[2][2] = {{R"(

declare function local:gt(
   $element as element()?)
   as xs:string
{
   fn:normalize-space(string-join($element/text(), ""))
};
)",
                                             R"(

declare function local:gt(
   $element as element()?)
   as xs:string
{
   fn:string-join($element/text(), "")
};
)"},
                                            {R"(

declare function local:gt(
   $element as element()*)
   as xs:string
{
   fn:normalize-space(string-join($element/text(), ""))
};
)",
                                             R"(

declare function local:gt(
   $element as element()*)
   as xs:string
{
   fn:string-join($element/text(), "")
};
)"}};

struct RowOptions {
  bool streaming;
  bool sequenceArgument;
  bool relativeLets;
  bool keepWhitespace;
};

/** The element at which a column's value is found: the node itself, or the owner of an attribute. */
XDMElemImpl* elementOf(XDMNode* node) noexcept {
  return node->nodeType() == 0 ? static_cast<XDMAttrImpl*>(node)->parent() : static_cast<XDMElemImpl*>(node);
}

bool liesInRow(XDMElemImpl* element) noexcept {
  while (element && !element->getDecidesRow()) element = element->parent();
  return element != nullptr;
}

/** Writes the parts of one query, column by column, and joins them. */
class RowQueryWriter {
 public:
  RowQueryWriter(XDMMainImpl& main, const RowOptions& options) noexcept
      : main_(main), options_(options), rowXPath_(view(main.decidingElement()->columnInfo().getXPath())) {}

  /** The query. Throws std::bad_alloc. */
  KvbString write() {
    for (int i = 0; XDMColumnImpl* column = main_.column(i); ++i) writeColumn(*column);
    writeHead();
    writeFor();
    // Absolute lets do not depend on the row and stand before it; relative ones need it.
    const std::string_view outer = options_.relativeLets ? for_.text() : lets_.text();
    const std::string_view inner = options_.relativeLets ? lets_.text() : for_.text();
    return joined(
        {head_.text(), "\n<table>\n{", outer, inner, "\nreturn\n(\n<row>", body_.text(), "\n</row>\n)\n}\n</table>"});
  }

 private:
  void writeColumn(const XDMColumnImpl& column) {
    const std::string_view name = view(column.name());
    const std::string_view xpath = view(column.xpath());
    const bool isElement = column.node()->nodeType() != 0;
    if (isElement) needsGetText_ = true;
    body_ << "<" << name << (isElement ? ">{local:gt(" : ">{string(");
    if (liesInRow(elementOf(column.node()))) {
      body_ << "$row" << tailBeyondRow(xpath);
    } else {
      writeLet(name, xpath);
      body_ << "$" << name;
    }
    body_ << ")}</" << name << ">";
  }

  /** As much of the end of `xpath` as it is longer than the row's XPath. */
  std::string_view tailBeyondRow(std::string_view xpath) const noexcept {
    return xpath.size() > rowXPath_.size() ? xpath.substr(rowXPath_.size()) : std::string_view();
  }

  void writeLet(std::string_view name, std::string_view xpath) {
    lets_ << "\nlet $" << name << " := ";
    if (options_.relativeLets) {
      writePathFromRow(xpath);
    } else {
      lets_ << xpath;
    }
  }

  /** Up from the row to the last common ancestor, and down from there. */
  void writePathFromRow(std::string_view xpath) {
    XPathSteps rowSteps(rowXPath_);
    XPathSteps columnSteps(xpath);
    std::string_view rowStep;
    std::string_view columnStep;
    bool inRow = rowSteps.next(&rowStep);
    bool inColumn = columnSteps.next(&columnStep);
    while (inRow && inColumn && rowStep == columnStep) {
      inRow = rowSteps.next(&rowStep);
      inColumn = columnSteps.next(&columnStep);
    }
    lets_ << "$row";
    for (; inRow; inRow = rowSteps.next(&rowStep)) lets_ << "/parent::*";
    for (; inColumn; inColumn = columnSteps.next(&columnStep)) lets_ << "/" << columnStep;
  }

  void writeHead() {
    const KvbString variable = main_.getCollectionVariableName();
    writeQueryHead(head_, main_.namespaceProlog(), options_.streaming);
    if (!isEmpty(variable)) head_ << "\ndeclare variable $" << variable << " as xs:string external;";
    if (needsGetText_) head_ << getText[options_.sequenceArgument][options_.keepWhitespace];
  }

  void writeFor() {
    const KvbString variable = main_.getCollectionVariableName();
    for_ << "\nfor $row in ";
    if (!isEmpty(variable)) for_ << "collection($" << variable << ")";
    for_ << rowXPath_;
  }

  XDMMainImpl& main_;
  const RowOptions options_;
  const std::string_view rowXPath_;
  bool needsGetText_ = false;
  QueryText head_;
  QueryText lets_;
  QueryText for_;
  QueryText body_;
};

}  // namespace

KvbString XDMMainImpl::genXQueryToColumns(bool streaming, bool sequenceArgument, bool relativeLets, bool keepWhitespace,
                                          KvbString* error) {
  return guarded(this, "(XQuery)", error, KvbString(), [&] {
    if (!root_ || selectedColumns_.getCount() == 0) {
      *error = message(unit, __LINE__, root_ ? 1441 : 1423);
      return KvbString();
    }
    if (!markSelected(false)) {
      *error = errorMessage_;
      return KvbString();
    }
    if (!decidingElement_) {
      *error = tryToString("No element decides the row.");
      return KvbString();
    }
    return RowQueryWriter(*this, {streaming, sequenceArgument, relativeLets, keepWhitespace}).write();
  });
}

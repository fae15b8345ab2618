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
      : main_(main), options_(options), rowXPath_(main.decidingElement()->getXPath()) {}

  /** The query; a null string when memory is exhausted. */
  KvbString write() noexcept {
    for (int i = 0; XDMColumnImpl* column = main_.column(i); ++i) writeColumn(column);
    writeHead();
    join();
    return failed_ ? KvbString() : resultText_;
  }

 private:
  void writeColumn(XDMColumnImpl* column) noexcept {
    const KvbString name = column->getName();
    const KvbString xpath = column->getXPath();
    const bool isElement = column->getNode()->nodeType() != 0;
    if (isElement) needsGetText_ = true;
    body_ << "<" << name << (isElement ? ">{local:gt(" : ">{string(");
    if (liesInRow(elementOf(column->getNode()))) {
      body_ << "$row" << tailBeyondRow(xpath);
    } else {
      writeLet(name, xpath);
      body_ << "$" << name;
    }
    body_ << ")}</" << name << ">";
  }

  /** As much of the end of `xpath` as it is longer than the row's XPath. */
  std::string_view tailBeyondRow(const KvbString& xpath) const noexcept {
    const std::string_view text = view(xpath);
    const std::size_t rowLength = view(rowXPath_).size();
    return text.size() > rowLength ? text.substr(rowLength) : std::string_view();
  }

  void writeLet(const KvbString& name, const KvbString& xpath) noexcept {
    lets_ << "\nlet $" << name << " := ";
    if (options_.relativeLets) {
      writePathFromRow(xpath);
    } else {
      lets_ << xpath;
    }
  }

  /** Up from the row to the last common ancestor, and down from there. */
  void writePathFromRow(const KvbString& xpath) noexcept {
    XPathSteps rowSteps(view(rowXPath_));
    XPathSteps columnSteps(view(xpath));
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

  void writeHead() noexcept {
    const KvbString variable = main_.getCollectionVariableName();
    writeQueryHead(result_, main_.namespaceProlog(), options_.streaming);
    if (!isEmpty(variable)) result_ << "\ndeclare variable $" << variable << " as xs:string external;";
    if (needsGetText_) result_ << getText[options_.sequenceArgument][options_.keepWhitespace];
  }

  void join() noexcept {
    result_ << "\n<table>\n{";
    // Absolute lets do not depend on the row and stand before it; relative ones need it.
    if (!options_.relativeLets) result_ << letsText_;
    writeFor();
    if (options_.relativeLets) result_ << letsText_;
    result_ << "\nreturn\n(\n<row>" << bodyText_ << "\n</row>\n)\n}\n</table>";
  }

  void writeFor() noexcept {
    const KvbString variable = main_.getCollectionVariableName();
    result_ << "\nfor $row in ";
    if (!isEmpty(variable)) result_ << "collection($" << variable << ")";
    result_ << rowXPath_;
  }

  XDMMainImpl& main_;
  const RowOptions options_;
  const KvbString rowXPath_;
  bool needsGetText_ = false;
  bool failed_ = false;
  KvbString letsText_;
  KvbString bodyText_;
  KvbString resultText_;
  QueryText lets_{letsText_, failed_};
  QueryText body_{bodyText_, failed_};
  QueryText result_{resultText_, failed_};
};

}  // namespace

KvbString XDMMainImpl::genXQueryToColumns(bool streaming, bool sequenceArgument, bool relativeLets, bool keepWhitespace,
                                          KvbString* error) {
  return guarded(this, "(XQuery)", error, KvbString(), [&] {
    if (!root_ || selectedColumns_.getCount() == 0) {
      *error = message(unit, __LINE__, root_ ? 1441 : 1423);
      return KvbString();
    }
    if (!markSelected()) {
      *error = errorMessage_;
      return KvbString();
    }
    if (!decidingElement_) {
      *error = tryToString("No element decides the row.");
      return KvbString();
    }
    KvbString query = RowQueryWriter(*this, {streaming, sequenceArgument, relativeLets, keepWhitespace}).write();
    if (query.isNull()) *error = message(unit, __LINE__, 29, "(XQuery)");
    return query;
  });
}

// The body of the rows-to-XML query: one recursive walk over the marked tree.
// Tested by tests/unit/kvxdmxqy_element_test.cpp and tests/processor/kvxdmxqy_from_rows_run_test.cpp.
#include <functional>
#include <map>

#include "kvxdmcol.h"
#include "kvxdmelem.h"
#include "kvxdmmain.h"
#include "kvxdmxqy_library.h"

namespace {

constexpr const char* lastRow = "[last()]";
constexpr const char* guardFirstRow = "\nif ($row is $rows[1]) then\n   ";
constexpr const char* guardLastRow = "\nif ($row is $rows[last()]) then\n   ";

/** What the whole walk shares. */
struct Walk {
  XDMMainImpl& main;
  const bool groupRows;
  short* functions;
  bool& failed;
  QueryText& out;

  void request(unsigned bits) noexcept { *functions = static_cast<short>(*functions | bits); }
};

/** Where values come from. Every element works on its own copy, so what it changes reaches its children only. */
struct Source {
  KvbString rowPath;        // yields the current row
  const char* rowSelector;  // picks one of several rows; null inside a row loop
  KvbString predicate;      // the equalities of the group columns so far
  bool inRowLoop;
};

/** What one selected step of an element consists of, its children apart. */
struct Parts {
  KvbString xpath;
  XDMColumnImpl* column;
  KvbString text;
  KvbString attributes;
  bool rowLoop;  // the children stand in a row loop

  bool hasText() const noexcept { return !isEmpty(text); }
  bool hasAttributes() const noexcept { return !isEmpty(attributes); }
  bool any() const noexcept { return hasText() || hasAttributes(); }
};

/** A call of a library function: how it begins and what it requests. */
struct Call {
  const char* opening;
  unsigned request;
};

Call chooseCall(const Parts& parts, bool children) noexcept {
  const bool attributes = parts.hasAttributes();
  if (!children) {
    if (!parts.hasText()) return {"local:e2e_na(\"", request::e2e_na};
    return {"local:e2e(\"", attributes ? request::e2e_3 : request::e2e_2};
  }
  if (!parts.hasText()) {
    if (attributes) return {"local:e2ec_nac(\"", request::e2ec_nac};
    return {"local:e2ec(\"", request::e2ec_2};
  }
  if (parts.column->getIsGroupBy()) return {"local:et2ec(\"", attributes ? request::et2ec_4 : request::et2ec_3};
  return {"local:e2ec(\"", attributes ? request::e2ec_4 : request::e2ec_3};
}

void writeName(QueryText& text, XDMNode* node) noexcept {
  XDMNamespace* ns = node->getNamespace();
  if (ns && !isEmpty(ns->getPrefix())) text << ns->getPrefix() << ":";
  text << node->getLocalName();
}

/** The default of a root attribute, between quotes that it does not hold where that can be. */
void writeConstant(QueryText& text, XDMAttrImpl* attribute) {
  KvbString value = attribute->getDefault();
  if (isEmpty(value)) return;
  const char* quote = "\"";
  if (view(value).find('"') != std::string_view::npos) {
    if (view(value).find('\'') == std::string_view::npos) {
      quote = "'";
    } else {
      value.replace(toString("\""), toString("&quot;"), 0, -1);
    }
  }
  text << "   ";
  writeName(text, attribute);
  text << "=" << quote << value << quote;
}

bool leadsToRow(XDMElemImpl* element) noexcept {
  return element->getDecidesRow() || element->parentOfDecidingRow() != 0;
}

/**
 * Writes one element. The root and the element that decides the row become direct constructors, every other element
 * becomes a call of a library function.
 *
 * Everything goes straight into the output. What depends on whether a child writes anything is written as if one did,
 * and is taken back when none has.
 */
class ElementWriter {
 public:
  ElementWriter(Walk& walk, XDMElemImpl* element, const KvbString& parentXPath, const Source& source) noexcept
      : walk_(walk),
        element_(element),
        parentXPath_(parentXPath),
        source_(source),
        constructor_(!element->parent() || element->getDecidesRow()) {}

  void write() {
    if (walk_.failed || (element_->getSelectedXPaths() == 0 && !element_->hasSelectedChild())) return;
    KvbString closing;
    if (constructor_) {
      openConstructor();
    } else {
      openGroupLoops(closing);
    }
    for (int i = 0; i < element_->getSelectedXPaths(); ++i) writeStep(i);
    if (constructor_) closeConstructor();
    walk_.out << closing;
  }

 private:
  bool isRoot() const noexcept { return !element_->parent(); }

  void openConstructor() {
    if (!walk_.groupRows && !isRoot()) {
      walk_.out << "for $row in /table/row\nreturn\n(\n";
      source_.rowPath = toString("$row");
      source_.rowSelector = nullptr;
    }
    walk_.out << "<";
    writeName(walk_.out, element_);
    source_.predicate.setNull();
  }

  /** The parenthesis closes the row loop: this element's own or, with grouping, the one its parent has opened. */
  void closeConstructor() noexcept {
    if (!element_->hasSelectedChild() && !hasText_) {
      walk_.out << "/>";
    } else {
      walk_.out << "}</";
      writeName(walk_.out, element_);
      walk_.out << ">";
    }
    if (!isRoot()) walk_.out << ")";
  }

  // Group loops

  void openGroupLoops(KvbString& closing) {
    if (!walk_.groupRows || element_->parentOfDecidingRow() == 0) return;
    const KvbString xpath = joined(parentXPath_, element_->getSelectedXPath(0));
    if (walk_.main.getGroupExplicit()) {
      openLoopsByLevel(xpath, closing);
    } else {
      groupColumn_ = firstColumn(xpath);
      if (groupColumn_) openLoop(groupColumn_, closing);
    }
  }

  /** The column of the element itself or, without one, that of the first attribute which has one. */
  XDMColumnImpl* firstColumn(const KvbString& xpath) {
    XDMColumnImpl* column = walk_.main.columnByXPath(xpath);
    for (auto* attribute = element_->firstAttribute(); attribute && !column; attribute = XDMElemImpl::next(attribute)) {
      column = columnOf(attribute, xpath);
    }
    return column;
  }

  /** Of several columns with one level the last one counts. Level 0 opens no loop. */
  void openLoopsByLevel(const KvbString& xpath, KvbString& closing) {
    std::map<int, XDMColumnImpl*, std::greater<>> columns;
    auto enter = [&](XDMColumnImpl* column) {
      if (column) columns[column->getIsGroupBy()] = column;
    };
    enter(walk_.main.columnByXPath(xpath));
    for (auto* attribute = element_->firstAttribute(); attribute; attribute = XDMElemImpl::next(attribute)) {
      enter(columnOf(attribute, xpath));
    }
    for (const auto& [level, column] : columns) openLoop(column, closing);
  }

  XDMColumnImpl* columnOf(XDMAttrImpl* attribute, const KvbString& xpath) {
    if (attribute->getSelectedXPaths() == 0) return nullptr;
    return walk_.main.columnByXPath(joined(xpath, attribute->getSelectedXPath(0)));
  }

  void openLoop(XDMColumnImpl* column, KvbString& closing) {
    KvbString loop;
    if (!walk_.main.buildGroupForLoop(column, source_.predicate, loop, closing)) walk_.out.fail();
    walk_.out << loop;
  }

  // One selected step

  void writeStep(int index) {
    const Parts parts = partsOf(element_->getSelectedXPath(index));
    hasText_ = parts.hasText();
    const unsigned start = walk_.out.length();
    if (wroteStep_) walk_.out << ",\n";
    if (constructor_ ? writeContent(parts) : writeCall(parts)) {
      wroteStep_ = true;
    } else {
      walk_.out.truncate(start);
    }
  }

  Parts partsOf(const KvbString& step) {
    Parts parts;
    parts.xpath = joined(parentXPath_, step);
    parts.column = walk_.main.columnByXPath(parts.xpath);
    const KvbString rowPath = source_.rowPath;
    if (!isEmpty(source_.predicate)) QueryText(source_.rowPath, walk_.failed) << "[" << source_.predicate << "]";
    parts.text = textOf(parts.column);
    parts.attributes = attributesOf(parts.xpath);
    if (!source_.inRowLoop) source_.rowPath = rowPath;  // inside a row loop the longer path stays, as is meant
    parts.rowLoop =
        walk_.groupRows && !source_.inRowLoop && element_->hasSelectedChild() && element_->parentOfDecidingRow() == 1;
    return parts;
  }

  KvbString textOf(XDMColumnImpl* column) noexcept {
    KvbString part;
    if (!column) return part;
    QueryText text(part, walk_.failed);
    if (!isEmpty(source_.predicate) && column->getIsGroupBy()) {
      text << "text{$" << column->getName() << "}";
    } else if (constructor_) {
      walk_.request(request::gt);
      text << "local:gt(";
      writeValue(text, column);
      text << ")";
    } else {
      writeValue(text, column);
    }
    return part;
  }

  void writeValue(QueryText& text, XDMColumnImpl* column) const noexcept {
    text << source_.rowPath;
    if (source_.rowSelector) text << source_.rowSelector;
    text << "/" << column->getName();
  }

  KvbString attributesOf(const KvbString& xpath) {
    KvbString part;
    QueryText text(part, walk_.failed);
    for (auto* attribute = element_->firstAttribute(); attribute; attribute = XDMElemImpl::next(attribute)) {
      if (isRoot() && attribute->getSelectedXPaths() == 0) writeConstant(text, attribute);
      for (int i = 0; i < attribute->getSelectedXPaths(); ++i) {
        XDMColumnImpl* column = walk_.main.columnByXPath(joined(xpath, attribute->getSelectedXPath(i)));
        if (column) writeAttribute(text, attribute, column);
      }
    }
    return part;
  }

  void writeAttribute(QueryText& text, XDMAttrImpl* attribute, XDMColumnImpl* column) noexcept {
    if (constructor_) {
      writeConstructedAttribute(text, attribute, column);
    } else {
      writeAttributeCall(text, attribute, column);
    }
  }

  void writeConstructedAttribute(QueryText& text, XDMAttrImpl* attribute, XDMColumnImpl* column) noexcept {
    walk_.request(request::gt);
    text << "   ";
    writeName(text, attribute);
    text << "=\"{local:gt(";
    writeValue(text, column);
    text << ")}\"";
  }

  void writeAttributeCall(QueryText& text, XDMAttrImpl* attribute, XDMColumnImpl* column) noexcept {
    const bool fromLoop = isLoopVariable(column);
    walk_.request(fromLoop ? request::msa : request::ma);
    text << (text.length() == 0 ? "(" : ",") << (fromLoop ? "local:msa(\"" : "local:ma(\"");
    writeName(text, attribute);
    text << "\", ";
    if (fromLoop) {
      text << "$" << column->getName();
    } else {
      writeValue(text, column);
    }
    text << ")";
  }

  /** Whether an attribute's value is taken from the variable of a group loop. */
  bool isLoopVariable(XDMColumnImpl* column) const noexcept {
    return walk_.groupRows && column->getIsGroupBy() && (walk_.main.getGroupExplicit() || column == groupColumn_);
  }

  /** A step of a constructor. False when there is nothing to write. */
  bool writeContent(const Parts& parts) {
    walk_.out << parts.attributes;
    const unsigned end = walk_.out.length();
    openContent(parts);
    const bool children = writeChildren(parts);
    if (parts.rowLoop) walk_.out << ")";
    if (!children && !parts.hasText() && !parts.rowLoop) walk_.out.truncate(end);
    return children || parts.any();
  }

  void openContent(const Parts& parts) noexcept {
    walk_.out << ">{" << parts.text;
    if (!parts.rowLoop) return;
    if (parts.hasText()) walk_.out << ",";
    openRowLoop();
  }

  /** A step as a call of a library function. False when there is nothing to write. */
  bool writeCall(const Parts& parts) {
    const unsigned start = walk_.out.length();
    if (element_->hasSelectedChild() && writeCallWithChildren(parts)) return true;
    walk_.out.truncate(start);
    if (parts.any()) writeCallWithoutChildren(parts);
    return parts.any();
  }

  bool writeCallWithChildren(const Parts& parts) {
    const Call call = chooseCall(parts, true);
    openCall(call, parts);
    openChildren(parts);
    if (!writeChildren(parts)) return false;
    walk_.out << ")";
    closeCall(call, parts);
    return true;
  }

  void writeCallWithoutChildren(const Parts& parts) noexcept {
    const Call call = chooseCall(parts, false);
    openCall(call, parts);
    closeCall(call, parts);
  }

  void openCall(const Call& call, const Parts& parts) noexcept {
    walk_.out << call.opening;
    writeName(walk_.out, element_);
    walk_.out << "\", " << parts.text;
    if (parts.hasText() && parts.hasAttributes()) walk_.out << ",\n  ";
    if (parts.hasAttributes()) walk_.out << parts.attributes << ")";
    if (!parts.rowLoop) return;
    if (parts.any()) walk_.out << ",";
    openRowLoop();
  }

  void openChildren(const Parts& parts) noexcept {
    if (parts.any() && !parts.rowLoop) walk_.out << ",\n  ";
    walk_.out << "(";
  }

  void closeCall(const Call& call, const Parts& parts) noexcept {
    walk_.request(call.request);
    walk_.out << (parts.rowLoop ? "))" : ")");
  }

  void openRowLoop() noexcept {
    walk_.out << "\n(let $rows := /table/row";
    if (!isEmpty(source_.predicate)) walk_.out << "[" << source_.predicate << "]";
    walk_.out << "\nfor $row in $rows\nreturn\n(\n";
  }

  // Children

  /**
   * Elements before the rows take their values from the first row, those after them from the last one. False when no
   * child wrote anything.
   */
  bool writeChildren(const Parts& parts) {
    if (!element_->hasSelectedChild()) return false;
    Source source = parts.rowLoop ? Source{toString("$row"), nullptr, KvbString(), true} : source_;
    const char* guard = parts.rowLoop ? guardFirstRow : nullptr;
    bool preceded = constructor_ && parts.hasText();
    bool wrote = false;
    for (auto* child = element_->firstChild(); child; child = child->nextSibling()) {
      if (!writeChild(child, parts.xpath, source, guard, preceded)) continue;
      wrote = preceded = true;
      if (guard && child->getDecidesRow()) guard = guardLastRow;
      if (!guard && walk_.groupRows && source.rowSelector && leadsToRow(child)) source.rowSelector = lastRow;
    }
    return wrote;
  }

  bool writeChild(XDMElemImpl* child, const KvbString& xpath, const Source& source, const char* guard, bool preceded) {
    if (child->getDecidesRow()) guard = nullptr;
    const unsigned start = walk_.out.length();
    openChild(guard, preceded);
    const unsigned open = walk_.out.length();
    ElementWriter(walk_, child, xpath, source).write();
    if (walk_.out.length() == open) {
      walk_.out.truncate(start);
      return false;
    }
    closeChild(guard, preceded);
    return true;
  }

  void openChild(const char* guard, bool preceded) noexcept {
    if (preceded) walk_.out << ",\n";
    if (guard) walk_.out << (preceded ? "(" : "") << guard;
  }

  void closeChild(const char* guard, bool preceded) noexcept {
    if (guard) walk_.out << "\nelse\n   ()" << (preceded ? ")" : "");
  }

  KvbString joined(const KvbString& xpath, const KvbString& step) noexcept {
    KvbString longer = xpath;
    QueryText(longer, walk_.failed) << "/" << step;
    return longer;
  }

  Walk& walk_;
  XDMElemImpl* element_;
  const KvbString& parentXPath_;
  Source source_;
  const bool constructor_;
  XDMColumnImpl* groupColumn_ = nullptr;
  bool hasText_ = false;    // the step written last has a text part
  bool wroteStep_ = false;  // a step has written something
};

}  // namespace

bool XDMMainImpl::genElementFromColumns(XDMElemImpl* element, short* functions, bool inRowLoop, bool groupRows,
                                        KvbString& xpath, KvbString& rowPath, const char* predicate,
                                        const char* rowSelector, KvbString& out) {
  return guarded(this, "(XQuery)", nullptr, false, [&] {
    bool failed = false;
    QueryText text(out, failed);
    Walk walk{*this, groupRows, functions, failed, text};
    ElementWriter(walk, element, xpath, {rowPath, rowSelector, KvbString(predicate, true), inRowLoop}).write();
    return !failed;
  });
}

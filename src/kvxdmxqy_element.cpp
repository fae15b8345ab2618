// The body of the rows-to-XML query: one recursive walk over the marked tree.
// Tested by tests/unit/kvxdmxqy_element_test.cpp and tests/processor/kvxdmxqy_from_rows_run_test.cpp.
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>

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
  QueryText& out;
  std::string xpath;  // where the walk is

  void request(unsigned bits) noexcept { *functions = static_cast<short>(*functions | bits); }
};

/** Goes a step down the XPath for as long as it lives. */
class StepDown {
 public:
  StepDown(Walk& walk, std::string_view step) : xpath_(walk.xpath), length_(xpath_.size()) {
    xpath_ += '/';
    xpath_ += step;
  }
  ~StepDown() { xpath_.erase(length_); }
  StepDown(const StepDown&) = delete;
  StepDown& operator=(const StepDown&) = delete;

 private:
  std::string& xpath_;
  const std::size_t length_;
};

/**
 * Where values come from. Every element works on its own copy, so what it changes reaches its children only. The texts
 * lie in the elements above.
 */
struct Source {
  std::string_view rowPath;    // yields the current row
  const char* rowSelector;     // picks one of several rows; null inside a row loop
  std::string_view predicate;  // the equalities of the group columns so far
  bool inRowLoop;
};

/** What one selected step of an element consists of, its children apart. */
struct Parts {
  XDMColumnImpl* column;
  std::string_view rowPath;  // of the values
  QueryText attributes;
  bool rowLoop;  // the children stand in a row loop

  bool hasText() const noexcept { return column != nullptr; }
  bool hasAttributes() const noexcept { return !attributes.empty(); }
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

template <class Node>
void writeName(QueryText& text, const Node* node) {
  const XDMNSImpl* ns = implOf(node->columnInfo().getNamespace());
  if (ns && !isEmpty(ns->prefix())) text << ns->prefix() << ":";
  text << node->columnInfo().getLocalName();
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
  ElementWriter(Walk& walk, XDMElemImpl* element, const Source& source) noexcept
      : walk_(walk), element_(element), source_(source), constructor_(!element->parent() || element->getDecidesRow()) {}

  void write() {
    if (element_->getSelectedXPaths() == 0 && !element_->hasSelectedChild()) return;
    QueryText closing;
    if (constructor_) {
      openConstructor();
    } else {
      openGroupLoops(closing);
    }
    for (int i = 0; i < element_->getSelectedXPaths(); ++i) writeStep(i);
    if (constructor_) closeConstructor();
    walk_.out << closing.text();
  }

 private:
  bool isRoot() const noexcept { return !element_->parent(); }

  void openConstructor() {
    if (!walk_.groupRows && !isRoot()) {
      walk_.out << "for $row in /table/row\nreturn\n(\n";
      source_.rowPath = "$row";
      source_.rowSelector = nullptr;
    }
    walk_.out << "<";
    writeName(walk_.out, element_);
    source_.predicate = {};
  }

  /** The parenthesis closes the row loop: this element's own or, with grouping, the one its parent has opened. */
  void closeConstructor() {
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

  void openGroupLoops(QueryText& closing) {
    if (!walk_.groupRows || element_->parentOfDecidingRow() == 0) return;
    const StepDown down(walk_, element_->getSelectedXPath(0));
    predicate_ << source_.predicate;
    if (walk_.main.getGroupExplicit()) {
      openLoopsByLevel(closing);
    } else {
      groupColumn_ = firstColumn();
      if (groupColumn_) openLoop(groupColumn_, closing);
    }
    source_.predicate = predicate_.text();
  }

  /** The column of the element itself or, without one, that of the first attribute which has one. */
  XDMColumnImpl* firstColumn() {
    XDMColumnImpl* column = walk_.main.columnByXPath(walk_.xpath);
    for (auto* attribute = element_->firstAttribute(); attribute && !column; attribute = XDMElemImpl::next(attribute)) {
      column = columnOf(attribute);
    }
    return column;
  }

  /** Of several columns with one level the last one counts. Level 0 opens no loop. */
  void openLoopsByLevel(QueryText& closing) {
    std::map<int, XDMColumnImpl*, std::greater<>> columns;
    auto enter = [&](XDMColumnImpl* column) {
      if (column) columns[column->getIsGroupBy()] = column;
    };
    enter(walk_.main.columnByXPath(walk_.xpath));
    for (auto* attribute = element_->firstAttribute(); attribute; attribute = XDMElemImpl::next(attribute)) {
      enter(columnOf(attribute));
    }
    for (const auto& [level, column] : columns) openLoop(column, closing);
  }

  XDMColumnImpl* columnOf(const XDMAttrImpl* attribute) {
    return attribute->getSelectedXPaths() == 0 ? nullptr : columnAt(attribute->getSelectedXPath(0));
  }

  XDMColumnImpl* columnAt(std::string_view step) {
    const StepDown down(walk_, step);
    return walk_.main.columnByXPath(walk_.xpath);
  }

  void openLoop(XDMColumnImpl* column, QueryText& closing) {
    walk_.main.buildGroupForLoop(column, predicate_, walk_.out, closing);
  }

  // One selected step

  void writeStep(int index) {
    const StepDown down(walk_, element_->getSelectedXPath(index));
    const Parts parts = partsOf();
    hasText_ = parts.hasText();
    const std::size_t start = walk_.out.length();
    if (wroteStep_) walk_.out << ",\n";
    if (constructor_ ? writeContent(parts) : writeCall(parts)) {
      wroteStep_ = true;
    } else {
      walk_.out.truncate(start);
    }
  }

  Parts partsOf() {
    Parts parts{walk_.main.columnByXPath(walk_.xpath), rowPathOfStep(), {}, opensRowLoop()};
    writeAttributes(parts);
    return parts;
  }

  std::string_view rowPathOfStep() {
    if (source_.predicate.empty()) return source_.rowPath;
    QueryText longer;
    longer << source_.rowPath << "[" << source_.predicate << "]";
    rowPath_ = std::move(longer);
    if (source_.inRowLoop) source_.rowPath = rowPath_.text();  // here the longer path stays, as is meant
    return rowPath_.text();
  }

  bool opensRowLoop() const noexcept {
    return walk_.groupRows && !source_.inRowLoop && element_->hasSelectedChild() &&
           element_->parentOfDecidingRow() == 1;
  }

  void writeText(const Parts& parts) {
    if (!parts.column) return;
    if (!source_.predicate.empty() && parts.column->getIsGroupBy()) {
      walk_.out << "text{$" << parts.column->name() << "}";
    } else if (constructor_) {
      walk_.request(request::gt);
      walk_.out << "local:gt(";
      writeValue(walk_.out, parts, parts.column);
      walk_.out << ")";
    } else {
      writeValue(walk_.out, parts, parts.column);
    }
  }

  void writeValue(QueryText& text, const Parts& parts, const XDMColumnImpl* column) const {
    text << parts.rowPath;
    if (source_.rowSelector) text << source_.rowSelector;
    text << "/" << column->name();
  }

  void writeAttributes(Parts& parts) {
    for (auto* attribute = element_->firstAttribute(); attribute; attribute = XDMElemImpl::next(attribute)) {
      if (isRoot() && attribute->getSelectedXPaths() == 0) writeConstant(parts.attributes, attribute);
      for (int i = 0; i < attribute->getSelectedXPaths(); ++i) {
        XDMColumnImpl* column = columnAt(attribute->getSelectedXPath(i));
        if (column) writeAttribute(parts, attribute, column);
      }
    }
  }

  void writeAttribute(Parts& parts, const XDMAttrImpl* attribute, XDMColumnImpl* column) {
    if (constructor_) {
      writeConstructedAttribute(parts, attribute, column);
    } else {
      writeAttributeCall(parts, attribute, column);
    }
  }

  void writeConstructedAttribute(Parts& parts, const XDMAttrImpl* attribute, const XDMColumnImpl* column) {
    QueryText& text = parts.attributes;
    walk_.request(request::gt);
    text << "   ";
    writeName(text, attribute);
    text << "=\"{local:gt(";
    writeValue(text, parts, column);
    text << ")}\"";
  }

  void writeAttributeCall(Parts& parts, const XDMAttrImpl* attribute, XDMColumnImpl* column) {
    QueryText& text = parts.attributes;
    const bool fromLoop = isLoopVariable(column);
    walk_.request(fromLoop ? request::msa : request::ma);
    text << (text.empty() ? "(" : ",") << (fromLoop ? "local:msa(\"" : "local:ma(\"");
    writeName(text, attribute);
    text << "\", ";
    if (fromLoop) {
      text << "$" << column->name();
    } else {
      writeValue(text, parts, column);
    }
    text << ")";
  }

  /** Whether an attribute's value is taken from the variable of a group loop. */
  bool isLoopVariable(XDMColumnImpl* column) const noexcept {
    return walk_.groupRows && column->getIsGroupBy() && (walk_.main.getGroupExplicit() || column == groupColumn_);
  }

  /** A step of a constructor. False when there is nothing to write. */
  bool writeContent(const Parts& parts) {
    walk_.out << parts.attributes.text();
    const std::size_t end = walk_.out.length();
    openContent(parts);
    const bool children = writeChildren(parts);
    if (parts.rowLoop) walk_.out << ")";
    if (!children && !parts.hasText() && !parts.rowLoop) walk_.out.truncate(end);
    return children || parts.any();
  }

  void openContent(const Parts& parts) {
    walk_.out << ">{";
    writeText(parts);
    if (!parts.rowLoop) return;
    if (parts.hasText()) walk_.out << ",";
    openRowLoop();
  }

  /** A step as a call of a library function. False when there is nothing to write. */
  bool writeCall(const Parts& parts) {
    const std::size_t start = walk_.out.length();
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

  void writeCallWithoutChildren(const Parts& parts) {
    const Call call = chooseCall(parts, false);
    openCall(call, parts);
    closeCall(call, parts);
  }

  void openCall(const Call& call, const Parts& parts) {
    walk_.out << call.opening;
    writeName(walk_.out, element_);
    walk_.out << "\", ";
    writeText(parts);
    if (parts.hasText() && parts.hasAttributes()) walk_.out << ",\n  ";
    if (parts.hasAttributes()) walk_.out << parts.attributes.text() << ")";
    if (!parts.rowLoop) return;
    if (parts.any()) walk_.out << ",";
    openRowLoop();
  }

  void openChildren(const Parts& parts) {
    if (parts.any() && !parts.rowLoop) walk_.out << ",\n  ";
    walk_.out << "(";
  }

  void closeCall(const Call& call, const Parts& parts) {
    walk_.request(call.request);
    walk_.out << (parts.rowLoop ? "))" : ")");
  }

  void openRowLoop() {
    walk_.out << "\n(let $rows := /table/row";
    if (!source_.predicate.empty()) walk_.out << "[" << source_.predicate << "]";
    walk_.out << "\nfor $row in $rows\nreturn\n(\n";
  }

  // Children

  /**
   * Elements before the rows take their values from the first row, those after them from the last one. False when no
   * child wrote anything.
   */
  bool writeChildren(const Parts& parts) {
    if (!element_->hasSelectedChild()) return false;
    Source source = parts.rowLoop ? Source{"$row", nullptr, {}, true} : source_;
    const char* guard = parts.rowLoop ? guardFirstRow : nullptr;
    bool preceded = constructor_ && parts.hasText();
    bool wrote = false;
    for (auto* child = element_->firstChild(); child; child = child->nextSibling()) {
      if (!writeChild(child, source, guard, preceded)) continue;
      wrote = preceded = true;
      if (guard && child->getDecidesRow()) guard = guardLastRow;
      if (!guard && walk_.groupRows && source.rowSelector && leadsToRow(child)) source.rowSelector = lastRow;
    }
    return wrote;
  }

  bool writeChild(XDMElemImpl* child, const Source& source, const char* guard, bool preceded) {
    if (child->getDecidesRow()) guard = nullptr;
    const std::size_t start = walk_.out.length();
    openChild(guard, preceded);
    const std::size_t open = walk_.out.length();
    ElementWriter(walk_, child, source).write();
    if (walk_.out.length() == open) {
      walk_.out.truncate(start);
      return false;
    }
    closeChild(guard, preceded);
    return true;
  }

  void openChild(const char* guard, bool preceded) {
    if (preceded) walk_.out << ",\n";
    if (guard) walk_.out << (preceded ? "(" : "") << guard;
  }

  void closeChild(const char* guard, bool preceded) {
    if (guard) walk_.out << "\nelse\n   ()" << (preceded ? ")" : "");
  }

  Walk& walk_;
  XDMElemImpl* element_;
  Source source_;
  QueryText predicate_;  // with the group columns of this element
  QueryText rowPath_;    // with the predicate
  const bool constructor_;
  XDMColumnImpl* groupColumn_ = nullptr;
  bool hasText_ = false;    // the step written last has a text part
  bool wroteStep_ = false;  // a step has written something
};

}  // namespace

bool XDMMainImpl::genElementFromColumns(XDMElemImpl* element, short* functions, bool inRowLoop, bool groupRows,
                                        std::string_view xpath, std::string_view rowPath, const char* predicate,
                                        const char* rowSelector, QueryText& out) {
  return guarded(this, "(XQuery)", nullptr, false, [&] {
    Walk walk{*this, groupRows, functions, out, std::string(xpath)};
    ElementWriter(walk, element, {rowPath, rowSelector, predicate, inRowLoop}).write();
    return true;
  });
}

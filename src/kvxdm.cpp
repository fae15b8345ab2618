// The main object: life, diagnostics, columns, loading and saving.
// Tested by tests/unit/kvxdm_test.cpp, kvxdmcol_test.cpp, kvxdm_load_test.cpp and kvxdm_save_test.cpp.
#include <memory>

#include <kvxbase/kvboptions.h>
#include <kvxbase/kvbuuid.h>

#include "kvxdmcol.h"
#include "kvxdmdom.h"
#include "kvxdmelem.h"
#include "kvxdmmain.h"
#include "kvxdmtext.h"

namespace {

constexpr char unit[] = "kvxdm";
constexpr unsigned int collectionFlag = 0x80000000U;
constexpr KvLoggingLevel information = 2;
constexpr KvLoggingLevel failure = 5;

void log(KvLogger_* logger, KvLoggingLevel level, int line, const char* text) noexcept {
  if (logger) logger->logEvent(level, unit, line, "%s", text);
}

void logEmptyModel(KvLogger_* logger, KvLoggingLevel level, int line) noexcept {
  if (logger) logger->logEvent(level, unit, line, 1423, static_cast<const char*>(nullptr));
}

bool benchMode() {
  const KvbConfigOptions* options = kvbGetConfigOptions(KvbString());
  KvbString value;
  return options && options->lookup(KvbString("Bench", true), &value, 0);
}

bool isSupportedVersion(const KvbString& version) {
  // A comparison of texts, on purpose: "1" and "0.9" are read, "1.1" and "10" are not.
  return !isEmpty(version) && version.compare(domNames().supportedVersion, true) <= 0;
}

/** The one `element` under the document element, or null with the text of what is wrong with the document. */
KvDomNode findRootElement(const KvDomNode& document, KvbString* text) {
  const DomNames& names = domNames();
  const KvbString version = document.getAttributeValue(names.version);
  const KvDomNode child = document.getFirstChild(false);
  if (document.getName().compare(names.xdm, true) != 0) {
    *text = message(unit, __LINE__, 1425);
  } else if (!isSupportedVersion(version)) {
    *text = message(unit, __LINE__, 1424, version);
  } else if (child.null()) {
    *text = message(unit, __LINE__, 1425);
  } else if (child.getName().compare(names.element, true) != 0) {
    *text = message(unit, __LINE__, 1426, names.xdm, names.element);
  } else if (!child.getNextSibling(false).null()) {
    *text = message(unit, __LINE__, 1427, names.xdm);
  } else {
    return child;
  }
  return KvDomNode();
}

// Compiled so that the test for a null object inside delete stays: release() may be called on one.
void destroy(XDMMainImpl* main) noexcept { delete main; }

}  // namespace

extern "C" XDMMain* kvxdmCreateMain(unsigned int flags) { return new XDMMainImpl(flags); }

XDMMainImpl::XDMMainImpl(unsigned int flags) : logger_(kvlogGetLogger("KV.XDM")) {
  if ((flags & collectionFlag) == 0) return;
  collectionVariableName_.assign("KV_");
  bool failed = false;
  if (benchMode()) {
    log(logger_, information, __LINE__, "XDM running in BENCH mode");
    collectionVariableName_.append("BENCH", &failed);
  } else {
    collectionVariableName_.append(kvbGetUUID(), &failed);
  }
  if (failed) throw std::bad_alloc();
}

XDMMainImpl::~XDMMainImpl() {
  log(logger_, information, __LINE__, "XDMMain instance is being destroyed");
  while (namespaceList_.getCount() > 0) {
    delete static_cast<XDMNSImpl*>(namespaceList_.removeItem(namespaceList_.getCount() - 1));
  }
}

void XDMMainImpl::release() { destroy(this); }

// State

KvbString XDMMainImpl::getCollectionVariableName() { return collectionVariableName_; }

XDMElement* XDMMainImpl::getRootNode() {
  if (!root_) logEmptyModel(logger_, information, __LINE__);
  return root_;
}

XDMElemImpl* XDMMainImpl::createRoot(const KvbString& prefix, const KvbString& localName) noexcept {
  if (root_) return fail(message(unit, __LINE__, 1422));
  root_ = new (std::nothrow) XDMElemImpl(this, nullptr, prefix, localName);
  if (!root_) return fail(message(unit, __LINE__, 29, "(XDM Root)"));
  return root_;
}

bool XDMMainImpl::setDecidesRow(XDMElemImpl* element) {
  ++rowMarkVersion_;
  if (decidingElement_ && decidingElement_ != element) decidingElement_->setDecidesRow(false);
  decidingElement_ = element->getDecidesRow() ? element : nullptr;
  return element->getDecidesRow();
}

// Every node holds its XPath, so a small document with a long path and much below it would fill any memory.
bool XDMMainImpl::holdXPath(std::size_t bytes) noexcept {
  constexpr std::size_t inAnyCase = 128 << 20;
  constexpr std::size_t forEachNode = 1 << 10;
  xpathBytes_ += bytes;
  return xpathBytes_ <= inAnyCase + ++nodeCount_ * forEachNode;
}

void XDMMainImpl::reportExhausted(const char* what, KvbString* error) noexcept {
  const KvbString text = message(unit, __LINE__, 29, what);
  if (error) {
    *error = text;
  } else {
    setErrorMessage(text);
  }
}

std::nullptr_t XDMMainImpl::fail(const KvbString& text) noexcept {
  setErrorMessage(text);
  return nullptr;
}

// Columns

int XDMMainImpl::getSelectedColumns() {
  if (!root_) logEmptyModel(logger_, failure, __LINE__);
  return selectedColumns_.getCount();
}

XDMColumn* XDMMainImpl::getSelectedColumn(int index) {
  if (root_) return column(index);
  logEmptyModel(logger_, failure, __LINE__);
  return nullptr;
}

XDMColumnImpl* XDMMainImpl::column(int index) const noexcept {
  return static_cast<XDMColumnImpl*>(selectedColumns_.getItem(index));
}

XDMColumn* XDMMainImpl::selectAsColumn(XDMNode* node, const KvbString& name, int isGroupBy) noexcept {
  // cppcheck-suppress throwInNoexceptFunction ; guarded catches what createColumnName throws
  return guarded<XDMColumn*>(this, "(Selected Column)", nullptr, nullptr, [&]() -> XDMColumn* {
    KvbString columnName = name;
    if (isEmpty(name)) {
      columnName = createColumnName(node->getLocalName());
      if (isEmpty(columnName)) return fail(message(unit, __LINE__, 267, node->getLocalName()));
    } else if (!addColumnName(name)) {
      return fail(message(unit, __LINE__, 267, name));
    }
    return addColumn(node, columnName, isGroupBy);
  });
}

XDMColumn* XDMMainImpl::addColumn(XDMNode* node, const KvbString& name, int isGroupBy) noexcept {
  std::unique_ptr<XDMColumnImpl> column(new (std::nothrow) XDMColumnImpl(this, node, name, isGroupBy));
  if (!column) {
    removeColumnName(name);
    return fail(message(unit, __LINE__, 29, "(Selected Column)"));
  }
  if (!selectedColumns_.appendItem(column.get())) return fail(message(unit, __LINE__, 1433, name));
  return column.release();
}

bool XDMMainImpl::addColumnName(const KvbString& name) { return columnNames_.emplace(name, 0).second; }

KvbString XDMMainImpl::createColumnName(const KvbString& base) {
  auto [entry, isNew] = columnNames_.emplace(base, 0);
  if (isNew) return base;
  const KvbString number = kvbStringFormat("%d", entry->second + 1);
  KvbString name = base;
  bool failed = number.isNull();
  name.append(number, &failed);
  if (failed) throw std::bad_alloc();
  ++entry->second;
  return name;
}

void XDMMainImpl::removeColumnName(const KvbString& name) noexcept {
  auto entry = columnNames_.find(name);
  if (entry != columnNames_.end() && entry->second == 0) columnNames_.erase(entry);
}

void XDMMainImpl::removeColumn(XDMColumn* column) noexcept { delete static_cast<XDMColumnImpl*>(column); }

void XDMMainImpl::unregisterColumn(XDMColumnImpl* column) noexcept {
  selectedColumns_.removeItem(column);
  removeColumnName(column->getName());
}

// Loading and saving

/** `parse` reads the input and returns its failure text, null after a success. */
template <class Parse>
bool XDMMainImpl::load(KvbString* error, Parse parse) noexcept {
  return guarded(this, "(XDM Root)", error, false, [&] {
    if (root_) {
      *error = message(unit, __LINE__, 1422);
      return false;
    }
    KvDom dom;
    if (!parse(dom)) return false;
    if (fromDOM(dom)) return true;
    *error = errorMessage_;
    return false;
  });
}

bool XDMMainImpl::loadFromFile(const KvbString& path, KvbString* error) {
  return load(error, [&](KvDom& dom) {
    if (dom.loadFile(path)) return true;
    *error = message(unit, __LINE__, 1428, path);
    return false;
  });
}

bool XDMMainImpl::loadFromXML(const KvbString& xml, KvbString* error) {
  return load(error, [&](KvDom& dom) {
    if (dom.loadXML(xml)) return true;
    *error = message(unit, __LINE__, 1429);
    return false;
  });
}

template <class Write>
bool XDMMainImpl::save(KvbString* error, Write write) noexcept {
  return guarded(this, "(XDM Root)", error, false, [&] {
    if (!root_) {
      *error = message(unit, __LINE__, 1423);
      return false;
    }
    KvDom dom;
    if (toDOM(&dom)) return write(dom);
    *error = errorMessage_;
    return false;
  });
}

bool XDMMainImpl::saveToFile(const KvbString& path, KvbString* error) {
  return save(error, [&](KvDom& dom) {
    if (dom.createFile(path, true, dom.getRoot())) return true;
    *error = message(unit, __LINE__, 463, path);
    return false;
  });
}

bool XDMMainImpl::saveToXML(KvbString* xml, KvbString* error) {
  return save(error, [&](KvDom& dom) {
    const KvbString text = dom.createXML(true, dom.getRoot());
    if (isEmpty(text)) {
      *error = message(unit, __LINE__, 1430);
      return false;
    }
    *xml = text;
    return true;
  });
}

bool XDMMainImpl::toDOM(KvDom* dom) {
  const DomNames& names = domNames();
  if (!dom->startNewDocument(names.xdm)) {
    setErrorMessage(message(unit, __LINE__, 1431, names.xdm));
    return false;
  }
  KvDomNode document = dom->getRoot();
  if (!document.setAttributeValue(names.version, names.supportedVersion)) {
    setErrorMessage(message(unit, __LINE__, 1432, names.version));
    return false;
  }
  return root_->toDOM(document);
}

bool XDMMainImpl::fromDOM(KvDom& dom) {
  KvbString text;
  KvDomNode element = findRootElement(dom.getRoot(), &text);
  if (element.null()) {
    setErrorMessage(text);
    return false;
  }
  return XDMElemImpl::fromDOM(this, nullptr, element);
}

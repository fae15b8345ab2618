// The property record that every element, attribute and column carries.
// Tested by tests/unit/kvxdmcinfo_test.cpp.
#include "kvxdmcinfo.h"

#include <memory>
#include <new>

#include "kvxdmdom.h"
#include "kvxdmelem.h"
#include "kvxdmmain.h"
#include "kvxdmns.h"
#include "kvxdmtext.h"

namespace {

constexpr char unit[] = "kvxdmcinfo";
constexpr kvbType characterString = 4;

// The XDM document carries names only. The record says so after every name that it reads or writes; these texts are
// part of what hosts see.
struct Notices {
  const KvbString reading{"../../src/kvxdmcinfo:84 is not implemented.", true};
  const KvbString writing{"../../src/kvxdmcinfo:551 is not implemented.", true};
};

const Notices& notices() {
  static const Notices texts;
  return texts;
}

KvbString* valueOf(void* item) noexcept { return static_cast<KvbString*>(item); }

/** Cuts the predicate off; a step that begins with "[" keeps its text. */
void cutPredicate(KvbString* step) {
  const std::size_t bracket = view(*step).find('[');
  if (bracket != std::string_view::npos && bracket > 0) step->truncate(static_cast<unsigned>(bracket));
}

bool isAttributeStep(const KvbString& step) noexcept { return view(step).starts_with('@'); }

}  // namespace

XDMColumnInfo::~XDMColumnInfo() {
  for (int i = 0; i < validValues_.getCount(); ++i) delete valueOf(validValues_.getItem(i));
}

int XDMColumnInfo::getMaximumLength() const noexcept { return type_ == characterString ? maximumLength_ : 0; }

KvbString XDMColumnInfo::getValidValue(int index) const noexcept {
  const KvbString* value = valueOf(validValues_.getItem(index));
  return value ? *value : KvbString();
}

bool XDMColumnInfo::setXPath(const KvbString& xpath, bool validate, KvbString* error) {
  if (validate && !leadsThroughTree(xpath, error)) return false;
  xpath_ = xpath;
  return true;
}

bool XDMColumnInfo::leadsThroughTree(const KvbString& xpath, KvbString* error) const {
  int count = 0;
  std::unique_ptr<KvbString[]> steps(main_->parseXPath(xpath, &count));
  if (!steps) {
    *error = main_->errorMessage();
    return false;
  }
  if (!main_->getRootNode()) {
    *error = message(unit, __LINE__, 1425);
    return false;
  }
  for (int i = 0; i < count; ++i) cutPredicate(&steps[i]);

  int matched = 0;
  if (!matchSteps(steps.get(), count, &matched)) {
    *error = message(unit, __LINE__, 29, "(XPath step)");
    return false;
  }
  // A last attribute step is accepted without a look for the attribute: columns may name attributes that no map does.
  if (matched == count && count > 0) return true;
  if (matched == count - 1 && isAttributeStep(steps[matched])) return true;
  *error = message(unit, __LINE__, 1445, steps[matched]);
  return false;
}

bool XDMColumnInfo::matchSteps(const KvbString* steps, int count, int* matched) const {
  bool failed = false;
  const XDMElemImpl* root = main_->root();
  *matched = 0;
  if (count == 0 || root->qualifiedName(&failed).compare(steps[0], true) != 0) return !failed;
  *matched = 1;
  XDMElemImpl* element = main_->root();
  while (*matched < count && (element = element->findChild(steps[*matched], &failed))) ++*matched;
  return !failed;
}

bool XDMColumnInfo::setDefault(const KvbString& value, KvbString* /* a refusal is silent */) noexcept {
  bool valid = validValues_.getCount() == 0;
  for (int i = 0; !valid && i < validValues_.getCount(); ++i) {
    valid = value.compare(*valueOf(validValues_.getItem(i)), true) == 0;
  }
  if (valid) default_ = value;
  return valid;
}

bool XDMColumnInfo::addValidValue(const KvbString& value, KvbString* error) noexcept {
  std::unique_ptr<KvbString> copy(new (std::nothrow) KvbString(value));
  if (!copy) {
    *error = message(unit, __LINE__, 29, "(Valid Value)");
    return false;
  }
  if (!validValues_.appendItem(copy.get())) {
    *error = message(unit, __LINE__, 1434, "Value", value);
    return false;
  }
  static_cast<void>(copy.release());  // the list holds it from now on
  return true;
}

KvDomNode XDMColumnInfo::toDOM(KvDomNode& parent, const KvbString& elementName) {
  KvDomNode node = parent.addChild(elementName);
  if (const int failure = writeName(node)) {
    main_->setErrorMessage(message(unit, __LINE__, failure, elementName, localName_));
    node.remove();
    return KvDomNode();
  }
  main_->setErrorMessage(notices().writing);
  return node;
}

int XDMColumnInfo::writeName(KvDomNode& node) const {
  const DomNames& names = domNames();
  if (node.null() || !node.setAttributeValue(names.name, localName_)) return 1435;
  if (!namespace_) return 0;
  if (!node.setAttributeValue(names.prefix, implOf(namespace_)->prefix())) return 1438;
  if (!node.setAttributeValue(names.uri, implOf(namespace_)->uri())) return 1437;
  return 0;
}

bool XDMColumnInfo::fromDOM(KvDomNode& node) {
  KvbString prefix;
  if (isEmpty(localName_) && !fromDOMQName(node, &prefix, &localName_)) return false;
  main_->setErrorMessage(notices().reading);
  return true;
}

bool XDMColumnInfo::fromDOMQName(KvDomNode& node, KvbString* prefix, KvbString* localName) {
  const DomNames& names = domNames();
  const KvbString name = node.getAttributeValue(names.name);
  if (isEmpty(name)) {
    main_->setErrorMessage(message(unit, __LINE__, 1439, names.name, node.getName()));
    return false;
  }
  *localName = name;
  *prefix = node.getAttributeValue(names.prefix);
  return true;
}

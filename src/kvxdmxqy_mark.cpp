// The marking pass: projects the selected columns onto the tree and gathers the namespace prolog of the queries.
// Also cuts XPaths into steps.
// Tested by tests/unit/kvxdmxqy_mark_test.cpp and tests/unit/kvxdm_parsexpath_test.cpp.
#include <algorithm>
#include <memory>
#include <string_view>

#include "kvxdmcol.h"
#include "kvxdmelem.h"
#include "kvxdmmain.h"
#include "kvxdmxqy_steps.h"
#include "kvxdmxqy_text.h"

namespace {

constexpr char unit[] = "kvxdmxqy";

}  // namespace

bool XDMMainImpl::markSelected(bool enterColumns) {
  if (!root_) {
    setErrorMessage(message(unit, __LINE__, 1423));
    return false;
  }
  if (selectedColumns_.getCount() == 0) {
    setErrorMessage(message(unit, __LINE__, 1441));
    return false;
  }
  columnsByXPath_.reset(enterColumns ? selectedColumns_.getCount() : 0);
  root_->clearSelectedXPaths();
  namespaceProlog_.clear();
  namespaceMap_.clear();
  ancestorsMarked_ = true;
  ++markingPass_;
  bool marked = true;
  MarkedPath last;
  for (int i = 0; marked && i < selectedColumns_.getCount(); ++i) {
    marked = markColumn(column(i), &last);
    if (enterColumns) columnsByXPath_.enter(i);
  }
  namespaceMap_.clear();
  return marked;
}

bool XDMMainImpl::markColumn(XDMColumnImpl* column, MarkedPath* last) {
  LastSteps steps(view(column->xpath()));
  XDMNode* node = column->node();
  if (node->nodeType() == 0) {
    if (!static_cast<XDMAttrImpl*>(node)->addSelectedXPath(steps.cut())) return false;
  } else {
    XDMElemImpl* element = static_cast<XDMElemImpl*>(node);
    if (!element->addSelectedXPath(steps.cut()) || !markNamespaces(element)) return false;
  }
  return markAncestors(implOf(node->getParent()), steps, last);
}

bool XDMMainImpl::markAncestors(XDMElemImpl* element, LastSteps steps, MarkedPath* last) {
  // The columns of one element come one after the other in most lists.
  if (element == last->element && steps.remaining() == last->xpath) return true;
  *last = {element, steps.remaining()};
  for (; element; element = element->parent()) {
    // An ancestor without room for its step does not end the pass; the generator that goes by these steps fails later.
    if (!element->addSelectedXPath(steps.cut())) ancestorsMarked_ = false;
    if (!markNamespaces(element)) return false;
    if (!isDeclared(element)) *last = {};
  }
  return true;
}

bool XDMMainImpl::isDeclared(const XDMElemImpl* element) const noexcept {
  return !element->firstNamespace() || element->declaredInPass() == markingPass_;
}

bool XDMMainImpl::markNamespaces(XDMElemImpl* element) {
  if (isDeclared(element)) return true;
  return guarded(this, "(XQuery Namespaces)", nullptr, false, [&] {
    bool recorded = true;
    for (const XDMNSImpl* ns = element->firstNamespace(); ns; ns = XDMElemImpl::next(ns)) {
      if (!declareNamespace(*ns)) return false;
      // Without a URI nothing is recorded, and the declaration is written again whenever it is met.
      if (isEmpty(ns->uri())) recorded = false;
    }
    if (recorded) element->setDeclaredInPass(markingPass_);
    return true;
  });
}

bool XDMMainImpl::declareNamespace(const XDMNSImpl& declaration) {
  KvbString& recorded = namespaceMap_[declaration.prefix()];
  if (isEmpty(recorded)) {
    recorded = declaration.uri();
    appendToProlog(declaration.prefix(), declaration.uri());
    return true;
  }
  if (recorded.compare(declaration.uri(), true) == 0) return true;
  setErrorMessage(message(unit, __LINE__, 1442, declaration.prefix(), declaration.uri(), recorded));
  namespaceMap_.clear();
  return false;
}

void XDMMainImpl::appendToProlog(const KvbString& prefix, const KvbString& uri) {
  QueryText prolog;
  if (namespaceProlog_.empty()) prolog << "\n\n";
  if (isEmpty(prefix)) {
    prolog << "declare default element namespace \"";
  } else {
    prolog << "declare namespace " << prefix << " = \"";
  }
  prolog << uri << "\";\n";
  namespaceProlog_ += prolog.text();
}

KvbString* XDMMainImpl::parseXPath(const KvbString& xpath, int* count) noexcept {
  const std::string_view text = view(xpath);
  const std::size_t capacity = text.size() < 2 ? 1 : 1 + std::count(text.begin() + 1, text.end(), '/');
  std::unique_ptr<KvbString[]> steps(new (std::nothrow) KvbString[capacity]);
  bool failed = !steps;
  *count = 0;
  XPathSteps remaining(text);
  for (std::string_view step; !failed && remaining.next(&step); ++*count) {
    steps[*count].append(step.data(), static_cast<unsigned>(step.size()), &failed);
  }
  if (!failed) return steps.release();
  setErrorMessage(message(unit, __LINE__, 29, "(XPath step array)"));
  *count = 0;
  return nullptr;
}

// The model that a command works on.
// Tested by tests/tool/xdm_show_test.cpp and tests/tool/xdm_map_test.cpp.
#ifndef XDM_MODEL_H
#define XDM_MODEL_H

#include <kvxdm/kvxdm.h>

#include <string>
#include <vector>

#include "options.h"

/** Loads or imports the model and changes it as the options say. Throws Failure and WrongUsage. */
XDMMainPtr openModel(const ModelOptions& options);

/** A walk over the elements of a model in document order, without recursion, so that depth costs nothing. */
class ElementWalk {
 public:
  explicit ElementWalk(XDMElement* root) : element_(root) {}
  /** The element at hand; null at the end. */
  XDMElement* element() const { return element_; }
  int level() const { return level_; }
  void next();

 private:
  XDMElement* element_;
  int level_ = 0;
};

/** The selected columns in their order. */
std::vector<XDMColumn*> columnsOf(XDMMain& main);
std::vector<std::string> columnNames(XDMMain& main);

/** The name of `node` with its prefix. */
std::string qualifiedName(XDMNode* node);

/** The name of a kvbType: "none", "integer", "double", "string" or "datetime". */
const char* typeName(kvbType type);

#endif

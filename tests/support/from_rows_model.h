// Makes the model of a shape and asks it for the query.
#ifndef KVXDM_TESTS_FROM_ROWS_MODEL_H
#define KVXDM_TESTS_FROM_ROWS_MODEL_H

#include "from_rows_shapes.h"
#include "host_model.h"
#include "kvxdmattr.h"
#include "kvxdmmain.h"
#include "temporary.h"

/** An import with a group-by string sets the flag for good, even when it then finds no table. */
inline void setGroupExplicit(XDMMain* main) {
  TemporaryFolder folder;
  KvbString error;
  main->createFromXMLMap(kv(folder.write("map.xml", R"(<ROWMAPS version="2.1"/>)")), kv(""), kv("by=x"), 0, &error);
  if (!static_cast<XDMMainImpl*>(main)->getGroupExplicit()) throw std::runtime_error("flag not set: " + str(error));
}

/** Selects a node with a group level, which the interface can't give beyond 1. */
inline XDMColumn* selectNode(XDMMain* main, const SelectedNode& selected) {
  XDMNode* node = nodeAt(main, selected.xpath);
  XDMColumn* column = static_cast<XDMMainImpl*>(main)->selectAsColumn(node, kv(selected.name), selected.groupLevel);
  KvbString error;
  if (!column) throw std::runtime_error(std::string("cannot select ") + selected.xpath);
  if (*selected.ownXPath && !column->setXPath(kv(selected.ownXPath), &error)) throw std::runtime_error(str(error));
  return column;
}

inline XDMMainPtr modelOf(const FromRowsShape& shape) {
  XDMMainPtr main(kvxdmCreateMain(0));
  if (shape.groupExplicit) setGroupExplicit(main.get());
  KvbString error;
  if (!main->loadFromXML(kv(shape.model), &error)) throw std::runtime_error(str(error));
  for (const auto& [xpath, value] : shape.defaults) {
    static_cast<XDMAttrImpl*>(nodeAt(main.get(), xpath))->setDefault(kv(value));
  }
  for (const SelectedNode& selected : shape.columns) selectNode(main.get(), selected);
  return main;
}

/** The query that the library writes. Throws std::runtime_error with the failure's text. */
inline std::string queryOf(const FromRowsShape& shape, bool groupRows) {
  KvbString error;
  KvbString query = modelOf(shape)->genXQueryFromColumns(true, groupRows, &error);
  if (error.length() > 0) throw std::runtime_error(str(error));
  return str(query);
}

#endif

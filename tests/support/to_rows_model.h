// Makes the model of a shape and asks it for the query.
#ifndef KVXDM_TESTS_TO_ROWS_MODEL_H
#define KVXDM_TESTS_TO_ROWS_MODEL_H

#include <kvxbase/kvboptions.h>

#include "host_model.h"
#include "to_rows_shapes.h"

inline XDMMainPtr modelOf(const ToRowsShape& shape) {
  kvbSetConfigOption(kv("Bench"), kv(""));
  XDMMainPtr main = loadModel(shape.model, shape.collection ? 0x80000000U : 0);
  kvbClearConfigOptions();
  elementAt(main.get(), shape.row)->setDecidesRow(true);
  for (const ChosenColumn& chosen : shape.columns) {
    XDMColumn* column = selectColumn(main.get(), chosen.xpath, chosen.name);
    KvbString error;
    if (*chosen.ownXPath && !column->setXPath(kv(chosen.ownXPath), &error)) throw std::runtime_error(str(error));
  }
  return main;
}

inline std::string queryOf(const ToRowsShape& shape) {
  const ToRowsArguments& arguments = shape.arguments;
  KvbString error;
  KvbString query = modelOf(shape)->genXQueryToColumns(arguments.streaming, arguments.sequenceArgument,
                                                       arguments.relativeLets, arguments.keepWhitespace, &error);
  if (error.length() > 0) throw std::runtime_error(str(error));
  return str(query);
}

#endif

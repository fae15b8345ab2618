// `xdm save`.
// Tested by tests/tool/xdm_save_test.cpp.
#include "commands.h"
#include "diagnostics.h"
#include "model.h"
#include "text.h"

void saveModel(const Options& options, Output& output) {
  XDMMainPtr main = openModel(options.model);
  KvbString document;
  KvbString error;
  if (!main->saveToXML(&document, &error)) throw Failure(toStd(error));
  output.write(toStd(document));
}

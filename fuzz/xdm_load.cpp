// Loads the input as an XDM document; what was loaded is saved, loaded and saved again.
#include "input.h"
#include "models.h"
#include "xmlmap.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string document(Input(data, size).rest());
  MainPtr main = makeMain();
  KvbString error;
  if (main->loadFromXML(kv(document), &error)) {
    EXPECT_TRUE(error.isNull()) << str(error);
    expectSavesTheSame(*main);
  } else {
    EXPECT_GT(error.length(), 0);
    // What was read before the failure stays, and can be read.
    if (main->root()) outline(main->root());
  }
  return 0;
}

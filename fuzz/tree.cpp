// Holds the tree against a plain re-implementation; the input chooses the operations, among them the creation of
// children, attributes and declarations.
#include "both_trees.h"
#include "input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  // There can be more elements than a byte counts.
  BothTrees trees(
      [&](int below) { return below <= 256 ? input.number(below) : (input.byte() * 256 + input.byte()) % below; });
  while (!input.atEnd()) trees.operate();
  trees.compareEverything();
  return 0;
}

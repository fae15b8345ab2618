// Tests the function library of kvxdmxqy_from_rows.cpp.
#include "kvxdmxqy_library.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "from_rows_model.h"

namespace {

std::string declared(int requested) {
  QueryText query;
  declareFunctions(static_cast<short>(requested), query);
  return str(query.text());
}

class LibraryFunction : public testing::TestWithParam<LibraryText> {};

TEST_P(LibraryFunction, HasItsLength) { EXPECT_EQ(GetParam().text.size(), GetParam().length); }

TEST_P(LibraryFunction, IsDeclaredByItsOwnBit) {
  const int ownBit = GetParam().request == 0x8000 ? 0x8000 : GetParam().request & 0x7fff;
  EXPECT_EQ(declared(ownBit), GetParam().text);
}

TEST_P(LibraryFunction, BringsLocalGtWhenItCallsIt) {
  const bool callsGt = GetParam().request != 0x8000 && GetParam().text.find("local:gt($") != std::string_view::npos;
  EXPECT_EQ(declared(GetParam().request),
            (callsGt ? std::string(libraryTexts()[0].text) : "") + std::string(GetParam().text));
}

TEST_P(LibraryFunction, IsDeclaredWhereItIsCalledAndNowhereElse) {
  int declaring = 0, others = 0;
  for (const FromRowsShape& shape : fromRowsShapes()) {
    for (bool groupRows : {false, true}) {
      const bool expected = shape.query(groupRows).declares(GetParam().name);
      const bool found = queryOf(shape, groupRows).find(GetParam().text) != std::string::npos;
      EXPECT_EQ(found, expected) << shape.name;
      ++(found ? declaring : others);
    }
  }
  EXPECT_GT(declaring, 0);
  EXPECT_GT(others, 0);
}

INSTANTIATE_TEST_SUITE_P(Texts, LibraryFunction, testing::ValuesIn(libraryTexts()), [](const auto& info) {
  std::string name(info.param.name);
  std::replace(name.begin(), name.end(), '/', '_');
  return name;
});

TEST(LibraryTest, NoRequestDeclaresNothing) { EXPECT_EQ(declared(0), ""); }

TEST(LibraryTest, DeclarationsKeepTheirOrder) {
  std::string all;
  for (const LibraryText& function : libraryTexts()) all += function.text;
  EXPECT_EQ(declared(0xFFF0), all);
}

}  // namespace

// Tests the operations of XDMColumn with exhausted memory.
#include "sweep.h"

namespace {

XDMColumn* firstColumn(XDMMain* main) { return main->getSelectedColumn(0); }

template <class Get>
Operation columnGetter(const std::string& name, Get get) {
  return getter(name, withColumn, firstColumn, get);
}

template <class Set>
Operation columnSetter(const std::string& name, Set set) {
  return setter(name, withColumn, firstColumn, set);
}

const KvbString value = kv("a value that no other text shares");

/** Calls `change` on the first column, with what else it needs. */
Operation change(const std::string& name, std::function<KvbString(XDMColumn*)> argumentFor,
                 std::function<bool(XDMColumn*, const KvbString&, KvbString*)> change,
                 const std::set<std::string>& texts) {
  return {.name = name,
          .kinds = withColumn,
          .prepare = [=](XDMMain* main) -> Act {
            XDMColumn* column = firstColumn(main);
            const KvbString argument = argumentFor(column);
            return [=](Outcome* outcome) { outcome->succeeded = change(column, argument, &outcome->error); };
          },
          .texts = texts};
}

KvbString newValue(XDMColumn*) { return value; }
KvbString pathOfItsNode(XDMColumn* column) { return column->getNode()->getXPath(); }
KvbString lostPath(XDMColumn* column) {
  return kv(str(column->getNode()->getMain()->getRootNode()->getXPath()) + "/lost/and/gone");
}

bool addValidValue(XDMColumn* column, const KvbString& text, KvbString* error) {
  return column->addValidValue(text, error);
}
bool setDefault(XDMColumn* column, const KvbString& text, KvbString* error) { return column->setDefault(text, error); }
bool setXPath(XDMColumn* column, const KvbString& text, KvbString* error) { return column->setXPath(text, error); }

const std::set<std::string> pathTexts = {catalogue(29, "(XPath step array)"), catalogue(29, "(XPath step)")};

const std::vector<Operation> operations = {
    columnGetter("getDefault", [](auto* c) { return c->getDefault(); }),
    columnGetter("getFormat", [](auto* c) { return c->getFormat(); }),
    columnGetter("getInformat", [](auto* c) { return c->getInformat(); }),
    columnGetter("getIsGroupBy", [](auto* c) { return c->getIsGroupBy(); }),
    columnGetter("getMaximumLength", [](auto* c) { return c->getMaximumLength(); }),
    columnGetter("getName", [](auto* c) { return c->getName(); }),
    columnGetter("getNode", [](auto* c) { return c->getNode(); }),
    columnGetter("getType", [](auto* c) { return c->getType(); }),
    columnGetter("getValidValue", [](auto* c) { return c->getValidValue(0); }),
    columnGetter("getValidValues", [](auto* c) { return c->getValidValues(); }),
    columnGetter("getXPath", [](auto* c) { return c->getXPath(); }),
    change("addValidValue", newValue, addValidValue,
           {catalogue(29, "(Valid Value)"), catalogue(1434, "Value", value.asCstr())}),
    change("setDefault", newValue, setDefault, {}),
    columnSetter("setFormat", [](auto* c) { c->setFormat(value); }),
    columnSetter("setInformat", [](auto* c) { c->setInformat(value); }),
    columnSetter("setIsGroupBy", [](auto* c) { c->setIsGroupBy(true); }),
    columnSetter("setMaximumLength", [](auto* c) { c->setMaximumLength(77); }),
    columnSetter("setName", [](auto* c) { c->setName(value); }),
    columnSetter("setType", [](auto* c) { c->setType(2); }),
    change("setXPath", pathOfItsNode, setXPath, pathTexts),
    change("setXPathThatLeadsNowhere", lostPath, setXPath, pathTexts),
};

class ColumnFault : public testing::TestWithParam<Case> {};

TEST_P(ColumnFault, LeavesNothingBetweenSuccessAndFailure) {
  RecordProperty("points", static_cast<int>(Sweep(*GetParam().operation, GetParam().kind).run().points));
}

INSTANTIATE_TEST_SUITE_P(Operation, ColumnFault, testing::ValuesIn(casesOf(operations)),
                         [](const auto& info) { return nameOf(info); });

}  // namespace

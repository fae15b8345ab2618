// Tests the XMLMap import as a whole with random maps, against a model that follows each path in the plainest way.
#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <optional>
#include <random>
#include <vector>

#include "xmlmap.h"

namespace {

/** A namespace that steps can use. */
struct Declared {
  std::string prefix;
  std::string uri;
};

struct Step {
  std::optional<std::size_t> declared;  // index of its namespace
  std::string localName;
  std::string predicate;
  bool isAttribute = false;
};

using Path = std::vector<Step>;

struct Column {
  Path path;
  std::string name;
  kvbType type = 0;
  int length = 0;
  std::string format;
  std::string informat;
  std::string defaultValue;
  std::vector<std::string> values;
};

struct Map {
  bool isExtended = false;
  std::vector<Declared> namespaces;
  Path rowPath;
  std::vector<Column> columns;
};

// Making a map

class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}

  Map map() {
    Map map;
    map.isExtended = chance(50);
    map.namespaces = {{"p", "urn:1"}, {"q", "urn:2"}, {"r", "urn:1"}};
    if (chance(50)) map.namespaces.push_back({"", "urn:d"});
    root_ = step(map);
    root_.predicate.clear();
    map.rowPath = path(map);
    if (map.rowPath.size() == 1) map.rowPath.push_back(step(map));
    for (std::size_t left = below(20) + 1; left > 0; --left) map.columns.push_back(column(map));
    return map;
  }

 private:
  std::size_t below(std::size_t limit) { return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random_); }
  bool chance(std::size_t percent) { return below(100) < percent; }

  Step step(const Map& map) {
    Step step;
    if (chance(30)) step.declared = below(map.namespaces.size());
    // A plain path cannot write the default namespace.
    if (step.declared && !map.isExtended && map.namespaces[*step.declared].prefix.empty()) step.declared.reset();
    step.localName = std::string(1, static_cast<char>('a' + below(4)));
    if (chance(20)) step.predicate = chance(50) ? "[1]" : "[@p:k='v']";
    return step;
  }

  Path path(const Map& map) {
    Path path = {root_};
    for (std::size_t depth = below(5); depth > 0; --depth) path.push_back(step(map));
    return path;
  }

  Column column(const Map& map) {
    Column column;
    column.path = path(map);
    if (chance(40)) {
      column.path.push_back(step(map));
      column.path.back().isAttribute = true;
    }
    column.name = "c" + std::to_string(++columns_);
    setType(&column);
    if (chance(30)) column.values = {"v1", " v2 ", "v1"};
    if (chance(30)) column.defaultValue = "v1";
    return column;
  }

  void setType(Column* column) {
    static constexpr kvbType types[] = {2, 3, 4, 5};
    column->type = types[below(4)];
    if (column->type == 4) column->length = static_cast<int>(below(50)) + 1;
    if (column->type == 5) column->format = column->informat = "HH:mm:ss";
    if (chance(20)) column->format = "yyyyMMdd";
    if (chance(20)) column->informat = "MM.dd";
  }

  std::mt19937 random_;
  Step root_;
  int columns_ = 0;
};

// Writing it down

std::string written(const Map& map, const Path& path) {
  std::string text;
  for (const Step& step : path) {
    text += step.isAttribute ? "/@" : "/";
    if (step.declared && map.isExtended) text += "{" + std::to_string(*step.declared + 1) + "}";
    if (step.declared && !map.isExtended) text += map.namespaces[*step.declared].prefix + ":";
    text += step.localName + step.predicate;
  }
  return text;
}

std::string written(const Map& map, const Column& column) {
  static constexpr const char* types[] = {"", "", "integer", "double", "string", "time"};
  std::string text = "<COLUMN name='" + column.name + "'><PATH>" + written(map, column.path) + "</PATH><DATATYPE>" +
                     types[column.type] + "</DATATYPE>";
  if (column.length > 0) text += "<LENGTH>" + std::to_string(column.length) + "</LENGTH>";
  if (column.format == "yyyyMMdd") text += "<FORMAT>b8601da</FORMAT>";
  if (column.informat == "MM.dd") text += "<INFORMAT>{MM.dd}</INFORMAT>";
  if (!column.defaultValue.empty()) text += "<DEFAULT>" + column.defaultValue + "</DEFAULT>";
  if (!column.values.empty()) text += "<ENUM>";
  for (const std::string& value : column.values) text += "<VALUE>" + value + "</VALUE>";
  if (!column.values.empty()) text += "</ENUM>";
  return text + "</COLUMN>";
}

std::string written(const Map& map) {
  std::string namespaces = map.isExtended ? "<NAMESPACES>" : "<OUTPUT><TABLEREF name='t'/><HEADING>";
  for (std::size_t i = 0; i < map.namespaces.size(); ++i) {
    const auto& [prefix, uri] = map.namespaces[i];
    namespaces += map.isExtended
                      ? "<NS id='" + std::to_string(i + 1) + "' prefix='" + prefix + "'>" + uri + "</NS>"
                      : "<ATTRIBUTE name='xmlns" + (prefix.empty() ? prefix : ":" + prefix) + "' value='" + uri + "'/>";
  }
  namespaces += map.isExtended ? "</NAMESPACES>" : "</HEADING></OUTPUT>";
  std::string columns;
  for (const Column& column : map.columns) columns += written(map, column);
  return rowmaps("2.1", namespaces + table("t", written(map, map.rowPath), columns));
}

// What must come of it

struct Node {
  std::string prefix;
  std::string uri;  // of an attribute
  std::string localName;
  bool visited = false;
  bool decidesRow = false;
  std::vector<Node> attributes = {};
  std::list<Node> children = {};
};

/** The prefix that a step is bound to; the default namespace binds no step. */
std::string prefixOf(const Map& map, const Step& step) {
  return step.declared ? map.namespaces[*step.declared].prefix : std::string();
}

class Model {
 public:
  explicit Model(const Map& map) : map_(map), root_{prefixOf(map, map.rowPath[0]), "", map.rowPath[0].localName} {
    add(map.rowPath, false)->decidesRow = true;
    for (const Column& column : map.columns) add(column.path, true);
  }

  std::string outline() const { return outline(root_); }

 private:
  Node* add(const Path& path, bool isColumn) {
    Node* node = &root_;
    for (auto step = path.begin() + 1; step != path.end(); ++step) {
      if (step->isAttribute) {
        addAttribute(node, *step);
      } else {
        node = child(node, *step);
        node->visited = node->visited || isColumn;
      }
    }
    return node;
  }

  Node* child(Node* parent, const Step& step) {
    const std::string prefix = prefixOf(map_, step);
    auto place = parent->children.begin();
    for (; place != parent->children.end(); ++place) {
      if (place->localName == step.localName && place->prefix == prefix) return &*place;
      if (!place->visited) break;
    }
    return &*parent->children.insert(place, Node{prefix, "", step.localName});
  }

  void addAttribute(Node* parent, const Step& step) {
    const std::string prefix = prefixOf(map_, step);
    const std::string uri = prefix.empty() ? prefix : map_.namespaces[*step.declared].uri;
    for (const Node& each : parent->attributes) {
      if (each.localName == step.localName && each.uri == uri) return;
    }
    parent->attributes.push_back(Node{prefix, uri, step.localName});
  }

  static std::string qualified(const Node& node) {
    return (node.prefix.empty() ? "" : node.prefix + ":") + node.localName;
  }

  static std::string outline(const Node& node) {
    std::string inner;
    for (const Node& each : node.attributes) inner += (inner.empty() ? "@" : " @") + qualified(each);
    for (const Node& each : node.children) inner += (inner.empty() ? "" : " ") + outline(each);
    return qualified(node) + (node.decidesRow ? "*" : "") + (inner.empty() ? "" : "(" + inner + ")");
  }

  const Map& map_;
  Node root_;
};

/** The XPath that a column must have: prefixes in place of numbers, predicates kept. */
std::string xpathOf(const Map& map, const Path& path) {
  std::string text;
  for (const Step& step : path) {
    const std::string prefix = prefixOf(map, step);
    text += (step.isAttribute ? "/@" : "/") + (prefix.empty() ? "" : prefix + ":") + step.localName + step.predicate;
  }
  return text;
}

void expectColumn(const Map& map, const Column& expected, XDMColumn* column) {
  EXPECT_EQ(str(column->getName()), expected.name);
  EXPECT_EQ(str(column->getXPath()), xpathOf(map, expected.path));
  EXPECT_EQ(column->getNode()->nodeType(), expected.path.back().isAttribute ? 0 : 1);
  EXPECT_EQ(str(column->getNode()->getLocalName()), expected.path.back().localName);
  EXPECT_EQ(column->getType(), expected.type);
  EXPECT_EQ(column->getMaximumLength(), expected.length);
  EXPECT_EQ(str(column->getFormat()), expected.format);
  EXPECT_EQ(str(column->getInformat()), expected.informat);
  EXPECT_EQ(str(column->getDefault()), expected.defaultValue);
  ASSERT_EQ(column->getValidValues(), static_cast<int>(expected.values.size()));
  for (std::size_t i = 0; i < expected.values.size(); ++i) {
    EXPECT_EQ(str(column->getValidValue(static_cast<int>(i))), expected.values[i]);
  }
}

/** Saves the tree, loads it again and saves that: the document must be the same. */
void expectSameDocumentAfterLoading(XDMMainImpl* main) {
  KvbString first;
  KvbString second;
  KvbString error;
  ASSERT_TRUE(main->saveToXML(&first, &error)) << str(error);
  XDMMainImpl* loaded = new XDMMainImpl(0);
  ASSERT_TRUE(loaded->loadFromXML(first, &error)) << str(error);
  ASSERT_TRUE(loaded->saveToXML(&second, &error)) << str(error);
  EXPECT_EQ(str(first), str(second));
  EXPECT_EQ(outline(loaded->root()), outline(main->root()));
  loaded->release();
}

class RandomMap : public testing::TestWithParam<unsigned> {};

TEST_P(RandomMap, GivesTheTreeTheColumnsAndTheDocumentThatItsPathsSpell) {
  for (unsigned i = 0; i < 100; ++i) {
    const Map map = Generator(GetParam() * 100 + i).map();
    SCOPED_TRACE(written(map));
    MapImport import;
    ASSERT_TRUE(import.run(written(map))) << import.error();
    EXPECT_EQ(outline(import.root()), Model(map).outline());
    ASSERT_EQ(import.main()->getSelectedColumns(), static_cast<int>(map.columns.size()));
    for (std::size_t c = 0; c < map.columns.size(); ++c) {
      expectColumn(map, map.columns[c], import.column(static_cast<int>(c)));
    }
    expectSameDocumentAfterLoading(import.main());
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomMap, testing::Range(0U, 10U));

}  // namespace

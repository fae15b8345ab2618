#include "html.h"

#include <nlohmann/json.hpp>
#include <string_view>
#include <unordered_map>

#include "columns.h"
#include "diagnostics.h"
#include "model.h"
#include "page_text.h"
#include "query.h"
#include "text.h"

namespace {

using Json = nlohmann::ordered_json;

/** The nodes of a model in document order, for the script of the page. */
class NodeList {
 public:
  explicit NodeList(XDMMain& main) {
    for (ElementWalk walk(main.getRootNode()); walk.element(); walk.next()) {
      XDMElement* element = walk.element();
      add(element, walk.level(), element->getDecidesRow());
      for (XDMAttribute* at = nullptr; (at = element->getNextAttribute(at));) add(at, walk.level() + 1, false);
    }
  }

  const Json& json() const { return json_; }
  std::size_t indexOf(XDMNode* node) const { return indexes_.at(node); }

 private:
  void add(XDMNode* node, int level, bool decidesRow) {
    indexes_[node] = json_.size();
    json_.push_back({level, qualifiedName(node), stepOf(node), decidesRow});
  }

  /** What the XPath of `node` has behind its parent's; whole paths would fill gigabytes in a deep tree. */
  static std::string stepOf(XDMNode* node) {
    XDMElement* parent = node->getParent();
    return toStd(node->getXPath()).substr(parent ? static_cast<std::size_t>(parent->getXPath().length()) : 0);
  }

  Json json_ = Json::array();
  std::unordered_map<XDMNode*, std::size_t> indexes_;
};

Json columnsWithNodes(XDMMain& main, const NodeList& nodes) {
  Json columns = columnsJson(main);
  Json* json = columns.get_ptr<Json::array_t*>()->data();
  for (XDMColumn* column : columnsOf(main)) (*json++)["node"] = nodes.indexOf(column->getNode());
  return columns;
}

Json queryJson(std::string (*makeQuery)(XDMMain&, const GeneratorOptions&), XDMMain& main) {
  try {
    return {{"text", makeQuery(main, {})}};
  } catch (const Failure& problem) {
    return {{"problem", problem.what()}};
  }
}

/** `json` as the text of a script element, which nothing in it can end. */
std::string scriptText(const Json& json) {
  std::string text;
  for (char c : json.dump(-1, ' ', false, Json::error_handler_t::replace)) {
    if (c == '<') {
      text += "\\u003c";
    } else {
      text += c;
    }
  }
  return text;
}

}  // namespace

std::string htmlPage(XDMMain& main, const std::string& title) {
  constexpr std::string_view mark = "{{model}}";
  constexpr std::size_t place = pageText.find(mark);
  static_assert(place != std::string_view::npos);
  NodeList nodes(main);
  Json model = {{"title", title},
                {"nodes", nodes.json()},
                {"columns", columnsWithNodes(main, nodes)},
                {"toRows", queryJson(&toRowsQuery, main)},
                {"fromRows", queryJson(&fromRowsQuery, main)}};
  return std::string(pageText.substr(0, place)) + scriptText(model) + std::string(pageText.substr(place + mark.size()));
}

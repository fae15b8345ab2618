#include "rows_reader.h"

#include <string_view>

#include "diagnostics.h"
#include "xml_reader.h"

namespace {

class RowsReader : public XmlReader {
 public:
  explicit RowsReader(XmlRowSink& sink) : XmlReader(Kind::document), sink_(sink) {}
  TableExtent extent{0, 0, false};

 private:
  enum Level { outside, inTable, inRow, inColumn };

  void onStart(const XmlName& name) override {
    switch (level_++) {
      case outside:
        require(name.local, "table");
        extent.begin = eventEnd();
        break;
      case inTable:
        require(name.local, "row");
        break;
      case inRow:
        row_.emplace_back(name.local, "");
        break;
      default:
        throw Failure(where() + "an element inside column " + row_.back().first);
    }
  }

  void onEnd() override {
    switch (--level_) {
      case outside:
        extent.end = eventStart();
        extent.isEmptyTag = eventStart() == eventEnd();
        break;
      case inTable:
        sink_.onRow(row_);
        row_.clear();
        break;
      default:
        break;
    }
  }

  void onText(std::string_view text) override {
    if (level_ == inColumn) row_.back().second += text;
  }

  void require(std::string_view name, const std::string& expected) {
    if (name != expected) throw Failure(where() + "the element " + std::string(name) + " in the place of " + expected);
  }

  std::string where() { return "line " + std::to_string(line()) + ": "; }

  XmlRowSink& sink_;
  int level_ = outside;
  XmlRow row_;
};

}  // namespace

TableExtent readXmlRows(std::FILE* file, XmlRowSink& sink) {
  RowsReader reader(sink);
  if (!reader.read(file)) throw Failure(reader.problem());
  return reader.extent;
}

#include "rows_reader.h"

#include "diagnostics.h"
#include "xml_reader.h"

namespace {

class RowsReader : public XmlReader {
 public:
  explicit RowsReader(XmlRowSink& sink) : XmlReader(Kind::document), sink_(sink) {}
  TableExtent extent{0, 0, false};

 private:
  enum Level { outside, inTable, inRow, inColumn };

  void onBytes(std::string_view bytes) override { sink_.onBytes(bytes); }

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
        startColumn(name.local);
        break;
      default:
        throw Failure(where() + "an element inside column " + row_[columns_ - 1].first);
    }
  }

  // The row before has left its texts, whose memory serves again.
  void startColumn(std::string_view name) {
    if (columns_ == row_.size()) row_.emplace_back();
    row_[columns_].first = name;
    row_[columns_++].second.clear();
  }

  void onEnd() override {
    switch (--level_) {
      case outside:
        extent.end = eventStart();
        extent.isEmptyTag = eventStart() == eventEnd();
        break;
      case inTable:
        row_.resize(columns_);
        sink_.onRow(row_);
        columns_ = 0;
        break;
      default:
        break;
    }
  }

  void onText(std::string_view text) override {
    if (level_ == inColumn) row_[columns_ - 1].second += text;
  }

  void require(std::string_view name, const std::string& expected) {
    if (name != expected) throw Failure(where() + "the element " + std::string(name) + " in the place of " + expected);
  }

  std::string where() { return "line " + std::to_string(line()) + ": "; }

  XmlRowSink& sink_;
  int level_ = outside;
  std::size_t columns_ = 0;  // how many of the row at hand have begun
  XmlRow row_;
};

}  // namespace

TableExtent readXmlRows(std::FILE* file, XmlRowSink& sink) {
  RowsReader reader(sink);
  if (!reader.read(file)) throw Failure(reader.problem());
  return reader.extent;
}

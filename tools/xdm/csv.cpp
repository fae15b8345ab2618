#include "csv.h"

// NOLINTNEXTLINE(readability-duplicate-include): this one is libcsv's
#include <csv.h>

#include <algorithm>
#include <exception>
#include <new>
#include <string_view>

#include "diagnostics.h"
#include "files.h"
#include "text.h"

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

bool needsQuotes(char c) { return c == ',' || c == '"' || c == '\r' || c == '\n'; }

/** The number of line ends in `text`: CRLF, CR and LF are one each. */
unsigned long lineEnds(std::string_view text) {
  unsigned long count = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    bool isSecondHalf = text[i] == '\n' && i > 0 && text[i - 1] == '\r';
    if ((text[i] == '\n' || text[i] == '\r') && !isSecondHalf) ++count;
  }
  return count;
}

int isNoSpace(unsigned char) { return 0; }  // blanks around a value are part of it

/** Puts libcsv's events together to records and keeps count of the lines. */
class Reader {
 public:
  Reader(std::string name, CsvSink& sink) : name_(std::move(name)), sink_(sink) {
    if (csv_init(&parser_, CSV_STRICT | CSV_STRICT_FINI | CSV_REPALL_NL) != 0) throw std::bad_alloc();
    csv_set_space_func(&parser_, &isNoSpace);
  }
  ~Reader() { csv_free(&parser_); }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  void feed(std::string_view piece) {
    std::size_t read = csv_parse(&parser_, piece.data(), piece.size(), &Reader::onField, &Reader::onLineEnd, this);
    check(read == piece.size());
  }
  void finish() { check(csv_fini(&parser_, &Reader::onField, &Reader::onLineEnd, this) == 0); }

 private:
  // No exception may pass through libcsv, so events are guarded, and dropped once one has failed.
  template <typename Event>
  void guarded(Event event) {
    if (thrown_) return;
    try {
      event();
    } catch (...) {
      thrown_ = std::current_exception();
    }
  }

  static void onField(void* bytes, std::size_t length, void* data) {
    Reader& reader = *static_cast<Reader*>(data);
    reader.guarded([&] { reader.addField({static_cast<const char*>(bytes), length}); });
  }
  static void onLineEnd(int end, void* data) {
    Reader& reader = *static_cast<Reader*>(data);
    reader.guarded([&] { reader.endLine(end); });
  }

  void addField(std::string_view field) {
    if (auto position = findNonUtf8(field)) {
      throw Failure("'" + name_ + "' is not UTF-8 on line " +
                    std::to_string(line_ + lineEnds(field.substr(0, *position))));
    }
    line_ += lineEnds(field);
    fields_.emplace_back(field);
    afterReturn_ = false;
  }

  // A line feed right after a carriage return belongs to it. -1 is the end of a file whose last line has no end.
  void endLine(int end) {
    bool isSecondHalf = end == '\n' && afterReturn_;
    afterReturn_ = end == '\r';
    if (isSecondHalf) return;
    if (fields_.empty()) fields_.emplace_back();
    sink_.onRecord(fields_, firstLine_);
    fields_.clear();
    firstLine_ = ++line_;
  }

  void check(bool succeeded) {
    if (thrown_) std::rethrow_exception(thrown_);
    if (succeeded) return;
    if (csv_error(&parser_) == CSV_ENOMEM) throw std::bad_alloc();
    throw Failure("'" + name_ + "' is not CSV: the quotes of the row that begins on line " +
                  std::to_string(firstLine_) + " don't fit together");
  }

  std::string name_;
  CsvSink& sink_;
  csv_parser parser_;
  std::vector<std::string> fields_;
  unsigned long line_ = 1;
  unsigned long firstLine_ = 1;
  bool afterReturn_ = false;
  std::exception_ptr thrown_;
};

}  // namespace

void CsvLine::add(std::string_view field) {
  if (fields_ == 0) text_.clear();
  if (fields_++ > 0) text_ += ',';
  if (std::any_of(field.begin(), field.end(), needsQuotes)) {
    addQuoted(field);
  } else {
    text_ += field;
  }
}

std::string_view CsvLine::finish() {
  if (text_.empty()) text_ = "\"\"";  // to many readers an empty line is no line
  text_ += "\r\n";
  fields_ = 0;
  return text_;
}

void CsvLine::addQuoted(std::string_view field) {
  text_ += '"';
  for (char c : field) {
    if (c == '"') text_ += '"';
    text_ += c;
  }
  text_ += '"';
}

std::string csvLine(const std::vector<std::string>& fields) {
  CsvLine line;
  for (const std::string& field : fields) line.add(field);
  return std::string(line.finish());
}

void readCsv(std::FILE* file, const std::string& name, CsvSink& sink) {
  Reader reader(name, sink);
  Buffer buffer;
  std::string_view piece = readPiece(file, buffer);
  if (piece.starts_with(byteOrderMark)) piece.remove_prefix(byteOrderMark.size());
  for (; !piece.empty(); piece = readPiece(file, buffer)) reader.feed(piece);
  reader.finish();
}

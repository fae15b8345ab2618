// The inputs of the benchmarks: XDM documents and XMLMaps of any size, the same bytes each time.
#ifndef KVXDM_BENCH_WORKLOADS_H
#define KVXDM_BENCH_WORKLOADS_H

#include <string>
#include <string_view>

/** An XDM document as saving it writes it, and how many elements and attributes it holds. */
struct Document {
  std::string text;
  long nodes = 0;
};

/** Writes XDM documents, indented as the library does it. */
class DocumentWriter {
 public:
  DocumentWriter() { document_.text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<xdm version=\"1.0\">\n"; }

  void open(std::string_view name) { put("element", name, " occurs=\"1\">\n"), ++depth_; }
  void leaf(std::string_view name) { put("element", name, " occurs=\"1\"/>\n"); }
  void attribute(std::string_view name) { put("attribute", name, "/>\n"); }
  void close() { --depth_, indent(), document_.text += "</element>\n"; }

  long nodes() const { return document_.nodes; }

  Document finish() {
    document_.text += "</xdm>\n";
    return std::move(document_);
  }

 private:
  void put(std::string_view kind, std::string_view name, std::string_view end) {
    ++document_.nodes;
    indent();
    document_.text.append("<").append(kind).append(" name=\"").append(name).append("\"").append(end);
  }

  void indent() { document_.text.append(depth_ < 100 ? depth_ * 2 : 200, ' '); }

  Document document_;
  std::size_t depth_ = 1;
};

inline std::string numbered(std::string_view name, long number) { return std::string(name) + std::to_string(number); }

/** Writes an element that stands for `elements` of them: itself, an attribute, and up to ten children. */
inline void writeBushy(DocumentWriter& writer, const std::string& name, long elements) {
  if (elements == 1) return writer.leaf(name);
  writer.open(name);
  writer.attribute("id");
  long left = elements - 1;
  for (long child = 0; left > 0; ++child) {
    const long share = (left + 9 - child) / (10 - child);
    writeBushy(writer, numbered("part", child), share);
    left -= share;
  }
  writer.close();
}

/** Ten children an element. */
inline Document bushyDocument(long elements) {
  DocumentWriter writer;
  writeBushy(writer, "catalog", elements);
  return writer.finish();
}

/** All elements under one. */
inline Document wideDocument(long elements) {
  DocumentWriter writer;
  writer.open("catalog");
  for (long i = 1; i < elements; ++i) writer.leaf(numbered("part", i));
  writer.close();
  return writer.finish();
}

/** Each element inside the one before; with 999 of them the document is as deep as documents may be. */
inline Document deepDocument(long elements) {
  DocumentWriter writer;
  for (long i = 1; i < elements; ++i) writer.open("level");
  writer.leaf("level");
  for (long i = 1; i < elements; ++i) writer.close();
  return writer.finish();
}

/** How the location paths of a map are written. */
enum class PathSyntax { plain, extended };

/** Writes XMLMaps of one table. Paths are given as "/a/b". */
class MapWriter {
 public:
  MapWriter(PathSyntax syntax, std::string_view rowPath) : syntax_(syntax) {
    text_ = syntax == PathSyntax::plain ? "<ROWMAPS version=\"1.9\">\n" : extendedHead;
    text_ += "<TABLE name=\"parts\">\n<TABLE-PATH" + path(rowPath) + "</TABLE-PATH>\n";
  }

  void column(const std::string& name, std::string_view xpath) {
    text_ += "<COLUMN name=\"" + name + "\">\n  <PATH" + path(xpath) +
             "</PATH>\n  <TYPE>character</TYPE>\n  <DATATYPE>string</DATATYPE>\n  <LENGTH>32</LENGTH>\n</COLUMN>\n";
  }

  std::string finish() { return std::move(text_) + "</TABLE>\n</ROWMAPS>\n"; }

 private:
  static constexpr const char* extendedHead =
      "<ROWMAPS version=\"2.1\">\n<NAMESPACES count=\"1\"><NS id=\"1\" prefix=\"c\">urn:catalog</NS></NAMESPACES>\n";

  std::string path(std::string_view xpath) const {
    if (syntax_ == PathSyntax::plain) return " syntax=\"XPath\">" + std::string(xpath);
    std::string steps;
    for (char c : xpath) steps += c == '/' ? std::string("/{1}") : std::string(1, c);
    return " syntax=\"XPathENR\">" + steps;
  }

  const PathSyntax syntax_;
  std::string text_;
};

/** All columns in the row, side by side. */
inline std::string wideMap(long columns, PathSyntax syntax) {
  MapWriter writer(syntax, "/catalog/part");
  for (long i = 0; i < columns; ++i) writer.column(numbered("c", i), "/catalog/part/" + numbered("value", i));
  return writer.finish();
}

/** Columns five levels deep, a hundred in each group of ten; the row is one of the groups, so most lie outside it. */
inline std::string nestedMap(long columns, PathSyntax syntax) {
  MapWriter writer(syntax, "/catalog/part/area0/group0");
  for (long i = 0; i < columns; ++i) {
    writer.column(numbered("c", i), "/catalog/part/" + numbered("area", i / 1000) + "/" +
                                        numbered("group", i / 100 % 10) + "/" + numbered("value", i));
  }
  return writer.finish();
}

/** All columns in the row, which stands inside two elements with a group column (g1, g2) each. */
inline std::string groupedMap(long columns) {
  MapWriter writer(PathSyntax::plain, "/catalog/region/shop/part");
  writer.column("g1", "/catalog/region/@name");
  writer.column("g2", "/catalog/region/shop/@name");
  for (long i = 0; i < columns; ++i) {
    writer.column(numbered("c", i), "/catalog/region/shop/part/" + numbered("value", i));
  }
  return writer.finish();
}

/** One column at the bottom of `levels` elements inside each other. */
inline std::string deepMap(long levels) {
  std::string path;
  for (long i = 0; i < levels; ++i) path += "/level";
  MapWriter writer(PathSyntax::plain, "/level/level");
  writer.column("c", path);
  return writer.finish();
}

#endif

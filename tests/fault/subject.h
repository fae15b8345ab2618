// Models to run operations on while memory is exhausted, one of each kind, and their whole contents as a text.
#ifndef KVXDM_TESTS_FAULT_SUBJECT_H
#define KVXDM_TESTS_FAULT_SUBJECT_H

#include <kvxdm/kvxdm.h>
#include <kvxlog/kvlogger.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "host_model.h"
#include "library_model.h"
#include "temporary.h"

enum class Kind { empty, loaded, withColumns, plainMap, extendedMap, grouped };

inline const std::vector<Kind> everyKind = {Kind::empty,    Kind::loaded,      Kind::withColumns,
                                            Kind::plainMap, Kind::extendedMap, Kind::grouped};
inline const std::vector<Kind> withRoot = {Kind::loaded, Kind::withColumns, Kind::plainMap, Kind::extendedMap,
                                           Kind::grouped};
inline const std::vector<Kind> withColumn = {Kind::withColumns, Kind::plainMap, Kind::extendedMap, Kind::grouped};

inline const char* nameOf(Kind kind) {
  const char* const names[] = {"Empty", "Loaded", "WithColumns", "PlainMap", "ExtendedMap", "Grouped"};
  return names[static_cast<int>(kind)];
}

inline void PrintTo(Kind kind, std::ostream* out) { *out << nameOf(kind); }

inline constexpr char plainMapText[] = R"(<ROWMAPS version="1.9">
  <OUTPUT>
    <TABLEREF name="items"/>
    <HEADING><ATTRIBUTE name="xmlns:p" value="urn:p"/><ATTRIBUTE name="p:edition" value="1"/></HEADING>
  </OUTPUT>
  <TABLE name="items">
    <TABLE-PATH syntax="XPath">/p:shop/p:order/p:item</TABLE-PATH>
    <COLUMN name="customer" retain="yes">
      <PATH>/p:shop/@customer</PATH><TYPE>character</TYPE><DATATYPE>string</DATATYPE><LENGTH>40</LENGTH>
    </COLUMN>
    <COLUMN name="date" retain="yes">
      <PATH>/p:shop/p:order/p:date</PATH><TYPE>numeric</TYPE><DATATYPE>date</DATATYPE>
    </COLUMN>
    <COLUMN name="size">
      <PATH>/p:shop/p:order/p:item/@size</PATH><DATATYPE>string</DATATYPE><LENGTH>1</LENGTH>
      <ENUM><VALUE>S</VALUE><VALUE>M</VALUE><VALUE>L</VALUE></ENUM><DEFAULT>M</DEFAULT>
    </COLUMN>
    <COLUMN name="price">
      <PATH>/p:shop/p:order/p:item/p:price[1]</PATH><DATATYPE>double</DATATYPE><FORMAT>{0.00}</FORMAT>
    </COLUMN>
  </TABLE>
</ROWMAPS>
)";

inline constexpr char extendedMapText[] = R"(<ROWMAPS version="2.1">
  <NAMESPACES><NS id="1" prefix="p">urn:p</NS><NS id="2" prefix="q">urn:q</NS></NAMESPACES>
  <TABLE name="items">
    <TABLE-PATH syntax="XPathENR">/{1}shop/{1}item</TABLE-PATH>
    <COLUMN name="name">
      <PATH syntax="XPathENR">/{1}shop/{1}item/{2}name</PATH><DATATYPE>string</DATATYPE><LENGTH>40</LENGTH>
    </COLUMN>
    <COLUMN name="code">
      <PATH syntax="XPathENR">/{1}shop/{1}item/@{2}code</PATH><DATATYPE>integer</DATATYPE>
    </COLUMN>
    <COLUMN name="number">
      <PATH syntax="XPathENR">/{1}shop/{1}item/{1}part/{2}number</PATH><DATATYPE>integer</DATATYPE>
    </COLUMN>
  </TABLE>
</ROWMAPS>
)";

/** Where the maps and documents that operations read lie; made once in a process. */
class FaultFiles {
 public:
  static const FaultFiles& get() {
    static const FaultFiles files;
    return files;
  }

  TemporaryFolder folder;
  const KvbString document = kv(folder.write("library.xdm", libraryModel));
  const KvbString plainMap = kv(folder.write("plain.xml", plainMapText));
  const KvbString extendedMap = kv(folder.write("extended.xml", extendedMapText));
  const KvbString target = kv(folder.file("target.xdm"));
};

inline constexpr unsigned headingFlag = 0x20000000;
inline constexpr unsigned retainFlag = 0x80000000;
inline constexpr char groupByText[] = "a=customer b=date";

/** A model. Its tree and columns, which release leaves behind, go with it, so that every byte can be accounted for. */
class Subject {
 public:
  explicit Subject(Kind kind) { fill(kind); }
  ~Subject() {
    if (!main_) return;
    while (XDMColumn* column = main_->getSelectedColumn(0)) delete static_cast<Destroyable<XDMColumn>*>(column);
    delete static_cast<Destroyable<XDMElement>*>(main_->getRootNode());
    main_->release();
  }
  Subject(const Subject&) = delete;
  Subject& operator=(const Subject&) = delete;

  XDMMain* main() const { return main_; }

  /** Hands the main object over. */
  XDMMain* give() { return std::exchange(main_, nullptr); }

 private:
  /** What an implementation looks like: its destructor stands right behind the operations of its interface. */
  template <class Interface>
  class Destroyable : public Interface {
   public:
    virtual ~Destroyable() = default;
  };

  void fill(Kind kind) {
    const FaultFiles& files = FaultFiles::get();
    KvbString error;
    bool filled = true;
    if (kind == Kind::loaded || kind == Kind::withColumns) filled = main_->loadFromXML(kv(libraryModel), &error);
    if (kind == Kind::plainMap) {
      filled = main_->createFromXMLMap(files.plainMap, none, none, headingFlag | retainFlag, &error);
    }
    if (kind == Kind::extendedMap) filled = main_->createFromXMLMap(files.extendedMap, none, none, 0, &error);
    if (kind == Kind::grouped) {
      filled = main_->createFromXMLMap(files.plainMap, none, kv(groupByText), headingFlag, &error);
    }
    if (!filled) throw std::runtime_error(str(error));
    if (kind == Kind::withColumns) selectColumns();
  }

  void selectColumns() {
    selectColumn(main_, "/library/@owner", "owner");
    XDMColumn* price = selectColumn(main_, "/library/book/m:price", "price");
    selectColumn(main_, "/library/book/@isbn", "isbn");
    selectColumn(main_, "/library/address", "address");
    KvbString error;
    price->setType(4);
    price->setMaximumLength(10);
    price->setFormat(kv("{0.00}"));
    if (!price->addValidValue(kv("1.00"), &error)) throw std::runtime_error(str(error));
  }

  const KvbString none;
  XDMMain* main_ = kvxdmCreateMain(0);
};

namespace contents {

inline void add(std::string* out, const KvbString& text) { *out += text.isNull() ? "~|" : str(text) + "|"; }

inline void addNode(std::string* out, XDMNode* node) {
  add(out, node->getXPath());
  add(out, node->getLocalName());
  add(out, node->getDefault());
  *out += std::to_string(node->getType()) + "\n";
}

inline void addElement(std::string* out, XDMElement* element) {
  addNode(out, element);
  *out += (element->getDecidesRow() ? "row " : "") + std::to_string(element->getMaxOccurrences()) + "\n";
  for (auto* ns = element->getNextNamespace(nullptr); ns; ns = ns->getNextSibling()) {
    add(out, ns->getPrefix());
    add(out, ns->getURI());
  }
  for (XDMNode* node = element->getNextAttribute(nullptr); node; node = node->getNextSibling()) addNode(out, node);
  for (XDMNode* child = element->getChild(); child; child = child->getNextSibling()) {
    addElement(out, static_cast<XDMElement*>(child));
  }
}

inline void addColumn(std::string* out, XDMColumn* column) {
  for (const KvbString& text : {column->getName(), column->getXPath(), column->getDefault(), column->getFormat(),
                                column->getInformat(), column->getNode()->getXPath()}) {
    add(out, text);
  }
  for (int i = 0; i < column->getValidValues(); ++i) add(out, column->getValidValue(i));
  for (int number : {column->getIsGroupBy(), column->getMaximumLength(), static_cast<int>(column->getType())}) {
    *out += std::to_string(number) + "|";
  }
  *out += "\n";
}

}  // namespace contents

/** Everything that a host can read from a model: its tree, its columns, its document and its queries. */
inline std::string contentsOf(XDMMain* main) {
  std::string out;
  if (XDMElement* root = main->getRootNode()) contents::addElement(&out, root);
  for (int i = 0; i < main->getSelectedColumns(); ++i) contents::addColumn(&out, main->getSelectedColumn(i));
  KvbString xml, error;
  main->saveToXML(&xml, &error);
  for (const KvbString& text : {xml, error, main->genXQueryToColumns(true, false, true, false, &error), error,
                                main->genXQueryFromColumns(true, true, &error), error}) {
    contents::add(&out, text);
  }
  return out;
}

#endif

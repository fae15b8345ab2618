// Tests documents made to do harm, through every way into a model: nothing is opened but what was named, limits hold,
// and no small input takes much time or memory.
#include <dlfcn.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kvxdm/kvxdm.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <ctime>
#include <string>
#include <vector>

#include "host_model.h"
#include "small_stack.h"
#include "temporary.h"

namespace {

std::atomic<int> openedFiles = 0;
std::atomic<int> openedSockets = 0;

template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// What the library, Xerces-C and all below them call in the place of the C library's own.

#pragma GCC visibility push(default)
extern "C" {

int open(const char* path, int flags, ...) {
  static auto* const original = next<int(const char*, int, ...)>("open");
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = (flags & O_CREAT) ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  ++openedFiles;
  return original(path, flags, mode);
}

FILE* fopen(const char* path, const char* mode) {
  static auto* const original = next<FILE*(const char*, const char*)>("fopen");
  ++openedFiles;
  return original(path, mode);
}

FILE* fopen64(const char* path, const char* mode) {
  static auto* const original = next<FILE*(const char*, const char*)>("fopen64");
  ++openedFiles;
  return original(path, mode);
}

int socket(int domain, int type, int protocol) noexcept {
  static auto* const original = next<int(int, int, int)>("socket");
  ++openedSockets;
  return original(domain, type, protocol);
}
}
#pragma GCC visibility pop

namespace {

using ::testing::HasSubstr;

// --- Document type declarations

struct Declaration {
  const char* name;
  std::string text;  // "ROOT" stands for the root element, "SECRET" and "SUBSET" for files that are there
  const char* refusal;
};

void PrintTo(const Declaration& declaration, std::ostream* out) { *out << declaration.name; }

std::string repeated(std::string_view text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

std::string flood() {
  std::string text = "<!ENTITY e0 'lol'>";
  for (int i = 1; i < 30; ++i) {
    text += "<!ENTITY e" + std::to_string(i) + " '" + repeated("&e" + std::to_string(i - 1) + ";", 10) + "'>";
  }
  return text;
}

const std::string noEntities = "entity declarations are not accepted";

// Those without a refusal are accepted, and what follows them is read.
const std::vector<Declaration> declarations = {
    {"Plain", "<!DOCTYPE ROOT>", ""},
    {"MissingExternalSubset", "<!DOCTYPE ROOT SYSTEM '/nowhere/none.dtd'>", ""},
    {"ExternalSubset", "<!DOCTYPE ROOT SYSTEM 'SUBSET'>", ""},
    {"ExternalSubsetByUrl", "<!DOCTYPE ROOT PUBLIC '-//X//Y' 'file://SUBSET'>", ""},
    {"ExternalSubsetInTheNetwork", "<!DOCTYPE ROOT SYSTEM 'http://127.0.0.1:9/x.dtd'>", ""},
    {"InternalSubset", "<!DOCTYPE ROOT [<!ELEMENT ROOT ANY><!ATTLIST ROOT x CDATA 'd'><!NOTATION n SYSTEM 'SECRET'>]>",
     ""},
    {"Entity", "<!DOCTYPE ROOT [<!ENTITY e 'x'>]>", noEntities.c_str()},
    {"FileReadingEntity", "<!DOCTYPE ROOT [<!ENTITY e SYSTEM 'SECRET'>]>", noEntities.c_str()},
    {"FileReadingEntityByUrl", "<!DOCTYPE ROOT [<!ENTITY e SYSTEM 'file://SECRET'>]>", noEntities.c_str()},
    {"NetworkEntity", "<!DOCTYPE ROOT [<!ENTITY e SYSTEM 'http://127.0.0.1:9/'>]>", noEntities.c_str()},
    {"UnparsedEntity", "<!DOCTYPE ROOT [<!NOTATION n SYSTEM 'n'><!ENTITY e SYSTEM 'SECRET' NDATA n>]>",
     noEntities.c_str()},
    {"ParameterEntity", "<!DOCTYPE ROOT [<!ENTITY % e '<!ELEMENT a ANY>'> %e;]>", noEntities.c_str()},
    {"FileReadingParameterEntity", "<!DOCTYPE ROOT [<!ENTITY % e SYSTEM 'SUBSET'> %e;]>", noEntities.c_str()},
    {"UndeclaredParameterEntity", "<!DOCTYPE ROOT [%e;]>", ""},
    {"EntityFlood", "<!DOCTYPE ROOT [" + flood() + "]>", noEntities.c_str()},
    {"QuadraticBlowUp", "<!DOCTYPE ROOT [<!ENTITY e '" + std::string(100000, 'x') + "'>]>", noEntities.c_str()},
    {"PredefinedEntity", "<!DOCTYPE ROOT [<!ENTITY lt '&#38;#60;'>]>", noEntities.c_str()},
};

std::string withReplaced(std::string text, const std::string& what, const std::string& with) {
  for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size())) {
    text.replace(at, what.size(), with);
  }
  return text;
}

class HostileDeclaration : public testing::TestWithParam<Declaration> {
 public:
  // The greatest of all refusals, in the report of a run of the whole program.
  static void TearDownTestSuite() { RecordProperty("microseconds", static_cast<int>(slowestRefusal_)); }

 protected:
  HostileDeclaration() {
    // The first document makes the parser begin, which looks for the system's settings.
    KvbString error;
    XDMMainPtr(kvxdmCreateMain(0))->loadFromXML(kv("<other/>"), &error);
  }

  std::string document(const std::string& root, const std::string& body) const {
    std::string text = withReplaced(GetParam().text, "ROOT", root);
    text = withReplaced(text, "SECRET", folder_.file("secret.txt"));
    return withReplaced(text, "SUBSET", folder_.file("subset.dtd")) + body;
  }

  std::string model() const { return document("xdm", "<xdm version='1.0'><element name='a'/></xdm>"); }
  std::string map() const { return document("ROWMAPS", "<ROWMAPS version='1.9'/>"); }

  bool isAccepted() const { return *GetParam().refusal == '\0'; }

  /** Whether `read` succeeds; counts what it opens, and measures the processor's time when it does not. */
  template <class Read>
  static bool reads(Read read) {
    openedFiles = 0;
    openedSockets = 0;
    const std::clock_t begin = std::clock();
    const bool accepted = read();
    if (!accepted) slowestRefusal_ = std::max(slowestRefusal_, (std::clock() - begin) * 1'000'000 / CLOCKS_PER_SEC);
    return accepted;
  }

  static void expectOpened(int files) {
    EXPECT_EQ(openedFiles, files);
    EXPECT_EQ(openedSockets, 0);
  }

  TemporaryFolder folder_;
  const std::string secret_ = folder_.write("secret.txt", "secret");
  const std::string subset_ = folder_.write("subset.dtd", "<!ATTLIST element name CDATA 'from the subset'>");
  XDMMainPtr main_{kvxdmCreateMain(0)};
  KvbString error_;

 private:
  static inline long slowestRefusal_ = 0;
};

TEST_P(HostileDeclaration, InATextOpensNothing) {
  const KvbString text = kv(model());
  EXPECT_EQ(reads([&] { return main_->loadFromXML(text, &error_); }), isAccepted());
  expectOpened(0);
  EXPECT_EQ(str(error_), isAccepted() ? "" : catalogue(1429));
}

TEST_P(HostileDeclaration, InAFileOpensThatFileOnly) {
  const std::string path = folder_.write("model.xdm", model());
  const KvbString file = kv(path);
  EXPECT_EQ(reads([&] { return main_->loadFromFile(file, &error_); }), isAccepted());
  expectOpened(1);
  EXPECT_EQ(str(error_), isAccepted() ? "" : catalogue(1428, path.c_str()));
}

TEST_P(HostileDeclaration, InAMapOpensThatMapOnly) {
  const std::string path = folder_.write("map.xml", map());
  const KvbString file = kv(path), none;
  EXPECT_FALSE(reads([&] { return main_->createFromXMLMap(file, none, none, 0, &error_); }));
  expectOpened(1);
  // An accepted map has no tables; a refused one says at which place, which lies in the first declaration.
  const std::string expected = isAccepted() ? catalogue(1450, path.c_str()) : GetParam().refusal;
  EXPECT_THAT(str(error_), HasSubstr(expected));
  EXPECT_EQ(main_->getRootNode(), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Of, HostileDeclaration, testing::ValuesIn(declarations),
                         [](const auto& info) { return info.param.name; });

// --- Limits

std::string xdm(const std::string& inner) { return "<xdm version='1.0'>" + inner + "</xdm>"; }

/** Elements inside each other, so that the document has `depth` levels with its root element. */
std::string nested(int depth) {
  return xdm(repeated("<element name='a'>", depth - 1) + repeated("</element>", depth - 1));
}

std::string withAttributes(int count) {
  std::string attributes;
  for (int i = 1; i < count; ++i) attributes += " a" + std::to_string(i) + "=''";
  return xdm("<element name='a'" + attributes + "/>");
}

bool loads(const std::string& document) {
  XDMMainPtr main(kvxdmCreateMain(0));
  KvbString error;
  const bool loaded = main->loadFromXML(kv(document), &error);
  EXPECT_EQ(str(error), loaded ? "" : catalogue(1429));
  return loaded;
}

TEST(DocumentLimit, AcceptsTheLimitAndRefusesOneMore) {
  const std::string most(10'000'000, 'x');
  struct {
    std::string accepted;
    std::string refused;
  } const cases[] = {
      {nested(1'000), nested(1'001)},
      {withAttributes(1'000), withAttributes(1'001)},
      {xdm("<element name='" + most + "'/>"), xdm("<element name='" + most + "x'/>")},
      {xdm("<element name='a'/>" + most), xdm("<element name='a'/>" + most + "x")},
  };
  for (const auto& [accepted, refused] : cases) {
    EXPECT_TRUE(loads(accepted));
    EXPECT_FALSE(loads(refused));
  }
}

std::string rowmaps(const std::string& inner) { return "<ROWMAPS version='2.1'>" + inner + "</ROWMAPS>"; }

std::string column(const std::string& name, const std::string& path) {
  return "<COLUMN name='" + name + "'><PATH>" + path + "</PATH><TYPE>numeric</TYPE></COLUMN>";
}

std::string tableOf(const std::string& path, const std::string& columns) {
  return "<TABLE name='t'><TABLE-PATH>" + path + "</TABLE-PATH>" + columns + "</TABLE>";
}

/** Imports `map`; the model, and what was said in `*error`. */
XDMMainPtr imported(const std::string& map, KvbString* error) {
  TemporaryFolder folder;
  XDMMainPtr main(kvxdmCreateMain(0));
  main->createFromXMLMap(kv(folder.write("map.xml", map)), KvbString(), KvbString(), 0, error);
  return main;
}

std::string deepPath(int levels) { return repeated("/a", levels); }

TEST(DocumentLimit, HoldsForTheLevelsOfAMapsPathToo) {
  KvbString error;
  imported(rowmaps(tableOf(deepPath(1'000), column("c", deepPath(1'000)))), &error);
  EXPECT_EQ(str(error), "");
  imported(rowmaps(tableOf(deepPath(1'001), column("c", deepPath(1'001)))), &error);
  EXPECT_EQ(str(error), catalogue(1445, "a"));
}

// --- Depth

void walk(XDMElement* element, int* levels) {
  for (; element; element = element->getChild()) ++*levels;
}

/** Saves the model, writes both queries and walks it. */
void useDeepModel(XDMMain* main, int levels) {
  KvbString xml, error;
  EXPECT_TRUE(main->saveToXML(&xml, &error)) << str(error);
  for (bool group : {false, true}) {
    EXPECT_NE(main->genXQueryFromColumns(true, group, &error).length(), 0) << str(error);
  }
  EXPECT_NE(main->genXQueryToColumns(true, false, true, false, &error).length(), 0) << str(error);
  int walked = 0;
  walk(main->getRootNode(), &walked);
  EXPECT_EQ(walked, levels);
}

TEST(DeepModel, OfADocumentNeedsLittleStack) {
  onSmallStack([] {
    XDMMainPtr main = loadModel(nested(1'000));
    XDMElement* deepest = main->getRootNode();
    while (deepest->getChild()) deepest = deepest->getChild();
    deepest->setDecidesRow(true);
    ASSERT_NE(deepest->selectAsColumn(kv("c"), true), nullptr);
    useDeepModel(main.get(), 999);
  });
}

TEST(DeepModel, OfAMapNeedsLittleStack) {
  onSmallStack([] {
    KvbString error;
    XDMMainPtr main = imported(rowmaps(tableOf(deepPath(1'000), column("c", deepPath(1'000)))), &error);
    useDeepModel(main.get(), 1'000);
  });
}

// --- A megabyte of input

constexpr int megabyte = 1'000'000;

/** Pieces with numbers from 1 put in for "#" until there is a megabyte. */
std::string megabyteOf(const std::string& piece, int bytes = megabyte) {
  std::string text;
  for (int i = 1; static_cast<int>(text.size()) < bytes; ++i) text += withReplaced(piece, "#", std::to_string(i));
  return text;
}

std::string levels(int count, int bytesOfAName, const std::string& inside) {
  const std::string begin = "<element name='" + std::string(static_cast<std::size_t>(bytesOfAName), 'n') + "'>";
  return repeated(begin, count) + inside + repeated("</element>", count);
}

std::string element(const std::string& inner) { return "<element name='root'>" + inner + "</element>"; }

struct Input {
  const char* name;
  std::string (*make)();
  bool isMap = false;
};

void PrintTo(const Input& input, std::ostream* out) { *out << input.name; }

const std::vector<Input> inputs = {
    {"ManyChildren", [] { return xdm(element(megabyteOf("<element name='a#'/>"))); }},
    {"ChildrenOfOneName", [] { return xdm(element(megabyteOf("<element name='a'/>"))); }},
    {"ManyAttributes", [] { return xdm(element(megabyteOf("<attribute name='a#'/>"))); }},
    {"ManyDeclarations",
     [] {
       return xdm(element(megabyteOf("<namespace prefix='p#' uri='u'/>", megabyte / 2) +
                          megabyteOf("<element name='e#' prefix='p#'/>", megabyte / 2)));
     }},
    {"LongNamesInsideEachOther", [] { return xdm(levels(999, 950, "")); }},
    {"ManyNodesBelowALongPath", [] { return xdm(levels(990, 450, megabyteOf("<element name='a#'/>", megabyte / 2))); }},
    {"ManyAttributesBelowALongPath",
     [] { return xdm(levels(500, 950, megabyteOf("<attribute name='a#'/>", megabyte / 2))); }},
    {"OpenTags", [] { return megabyteOf("<a>"); }},
    {"Nonsense", [] { return megabyteOf("&#60;"); }},
    {"ManyColumns", [] { return rowmaps(tableOf("/r", megabyteOf(column("c#", "/r/c#")))); }, true},
    {"ManyColumnsOfOnePath", [] { return rowmaps(tableOf("/r", megabyteOf(column("c#", "/r/@c")))); }, true},
    {"ColumnsWithoutNames", [] { return rowmaps(tableOf("/r", megabyteOf(column("", "/r/@c")))); }, true},
    {"ManySteps", [] { return rowmaps(tableOf("/r", column("c", repeated("/r", megabyte / 2)))); }, true},
    {"ManyDeepColumns", [] { return rowmaps(tableOf("/a", megabyteOf(column("c#", deepPath(900))))); }, true},
    {"ManyValues",
     [] {
       return rowmaps(tableOf("/r", "<COLUMN name='c'><PATH>/r/c</PATH><TYPE>numeric</TYPE><ENUM>" +
                                        megabyteOf("<VALUE>v#</VALUE>") + "</ENUM></COLUMN>"));
     },
     true},
    {"ManyDeclarationsInAMap",
     [] {
       return rowmaps("<NAMESPACES>" + megabyteOf("<NS id='#' prefix='p#'>u</NS>", megabyte / 2) + "</NAMESPACES>" +
                      tableOf("/r", megabyteOf(column("c#", "/r/c#"), megabyte / 2)));
     },
     true},
    {"ManyHeadings",
     [] {
       return rowmaps("<OUTPUT><TABLEREF name='t'/><HEADING>" +
                      megabyteOf("<ATTRIBUTE name='xmlns:p#' value='u'/>", megabyte / 2) + "</HEADING></OUTPUT>" +
                      tableOf("/r", megabyteOf(column("c#", "/r/c#"), megabyte / 2)));
     },
     true},
    {"ManyTables", [] { return rowmaps(megabyteOf("<TABLE name='t#'/>")); }, true},
};

/** Loads or imports the input and does with the model what there is to do. */
void useInput(const Input& input) {
  const std::string text = input.make();
  KvbString error, xml;
  XDMMainPtr main(kvxdmCreateMain(0));
  if (input.isMap) {
    main = imported(text, &error);
  } else {
    main->loadFromXML(kv(text), &error);
  }
  main->saveToXML(&xml, &error);
  main->genXQueryToColumns(true, false, true, false, &error);
  main->genXQueryFromColumns(true, true, &error);
}

/** How much more a sanitizer may take. */
constexpr long slowness = KVXDM_SANITIZED ? 10 : 1;

/** The time on the processor, which other processes have no part in. */
long milliseconds(const rusage& usage) {
  return (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1'000 +
         (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1'000;
}

class MegabyteOfInput : public testing::TestWithParam<Input> {};

TEST_P(MegabyteOfInput, TakesLittleTimeAndMemory) {
  const pid_t child = fork();
  if (child == 0) {
    useInput(GetParam());
    _exit(0);
  }
  int status = 0;
  rusage usage;
  ASSERT_EQ(wait4(child, &status, 0, &usage), child);
  EXPECT_EQ(status, 0);
  EXPECT_LT(milliseconds(usage), 2'000 * slowness);
  EXPECT_LT(usage.ru_maxrss, 512 * 1024 * slowness) << "KiB";
  RecordProperty("milliseconds", static_cast<int>(milliseconds(usage)));
  RecordProperty("KiB", static_cast<int>(usage.ru_maxrss));
}

INSTANTIATE_TEST_SUITE_P(Of, MegabyteOfInput, testing::ValuesIn(inputs),
                         [](const auto& info) { return info.param.name; });

}  // namespace

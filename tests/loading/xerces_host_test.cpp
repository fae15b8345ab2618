// Tests that the library comes and goes in a host that is not linked with it and uses Xerces-C itself.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <string>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax/HandlerBase.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "temporary.h"

namespace {

namespace xercesc = XERCES_CPP_NAMESPACE;

using UseLibrary = bool (*)(const char* map);

/** The plug-in with the library behind it, as long as this lives. */
class LoadedPlugIn {
 public:
  LoadedPlugIn() : handle_(dlopen(KVXDM_PLUG_IN, RTLD_NOW | RTLD_LOCAL)) { EXPECT_NE(handle_, nullptr) << dlerror(); }
  ~LoadedPlugIn() { EXPECT_EQ(dlclose(handle_), 0); }
  LoadedPlugIn(const LoadedPlugIn&) = delete;
  LoadedPlugIn& operator=(const LoadedPlugIn&) = delete;

  bool use(const std::string& map) const {
    return reinterpret_cast<UseLibrary>(dlsym(handle_, "useLibrary"))(map.c_str());
  }

 private:
  void* handle_;
};

bool isLoaded(const char* library) {
  void* handle = dlopen(library, RTLD_NOW | RTLD_NOLOAD);
  if (handle) dlclose(handle);
  return handle != nullptr;
}

class CountingHandler : public xercesc::DefaultHandler {
 public:
  void startElement(const XMLCh*, const XMLCh*, const XMLCh*, const xercesc::Attributes&) override { ++elements; }
  int elements = 0;
};

/** The elements that the host's own parser finds in a document of three. */
int elementsThatTheHostReads() {
  const std::string text = "<a><b/><c/></a>";
  xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(text.data()), text.size(), "host");
  std::unique_ptr<xercesc::SAX2XMLReader> reader(xercesc::XMLReaderFactory::createXMLReader());
  CountingHandler handler;
  reader->setContentHandler(&handler);
  reader->parse(source);
  return handler.elements;
}

class XercesHost : public testing::Test {
 protected:
  XercesHost() { xercesc::XMLPlatformUtils::Initialize(); }
  ~XercesHost() override { xercesc::XMLPlatformUtils::Terminate(); }

  TemporaryFolder folder_;
  const std::string map_ = folder_.write("map.xml", "<NOMAP/>");
};

TEST_F(XercesHost, KeepsReadingBeforeBetweenAndAfter) {
  EXPECT_EQ(elementsThatTheHostReads(), 3);
  for (int i = 0; i < 3; ++i) {
    LoadedPlugIn plugIn;
    EXPECT_EQ(elementsThatTheHostReads(), 3);
    EXPECT_TRUE(plugIn.use(map_));
    EXPECT_EQ(elementsThatTheHostReads(), 3);
  }
  EXPECT_EQ(elementsThatTheHostReads(), 3);
}

TEST_F(XercesHost, MayEndItsOwnUseFirst) {
  LoadedPlugIn plugIn;
  EXPECT_TRUE(plugIn.use(map_));
  xercesc::XMLPlatformUtils::Terminate();
  EXPECT_TRUE(plugIn.use(map_));
  xercesc::XMLPlatformUtils::Initialize();
  EXPECT_EQ(elementsThatTheHostReads(), 3);
}

TEST_F(XercesHost, SeesTheLibraryGo) {
  EXPECT_FALSE(isLoaded(KVXDM_LIBRARY));
  {
    LoadedPlugIn plugIn;
    EXPECT_TRUE(plugIn.use(map_));
    EXPECT_TRUE(isLoaded(KVXDM_LIBRARY));
  }
  EXPECT_FALSE(isLoaded(KVXDM_LIBRARY));
  EXPECT_FALSE(isLoaded(KVXDOM_LIBRARY));
  // Loggers live as long as the process, so they and the texts below them stay.
  EXPECT_TRUE(isLoaded(KVXLOG_LIBRARY));
  EXPECT_TRUE(isLoaded(KVXBASE_LIBRARY));
}

TEST_F(XercesHost, LoadsAndUnloadsWithoutGrowth) {
  auto cycles = [this](int count) {
    for (int i = 0; i < count; ++i) EXPECT_TRUE(LoadedPlugIn().use(map_));
    return mallinfo2().uordblks;
  };
  constexpr int times = 1000;
  constexpr std::size_t smallestBlock = 32;
  const std::size_t before = cycles(times / 10);
  const std::size_t after = cycles(times);
  // The heap's own count wavers by a few blocks; one left behind each time would show.
  EXPECT_LT(after, before + times * smallestBlock / 2);
}

}  // namespace

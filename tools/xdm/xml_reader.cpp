#include "xml_reader.h"

#include <new>

#include "files.h"

namespace {

constexpr char separator = ' ';  // stands in no URI and in no name

XmlName split(const char* name) {
  std::string_view whole(name);
  std::size_t at = whole.rfind(separator);
  if (at == std::string_view::npos) return {{}, whole};
  return {whole.substr(0, at), whole.substr(at + 1)};
}

// Enough for names and identifiers in ASCII.
int readBytewise(void*, const XML_Char*, XML_Encoding* encoding) {
  for (int byte = 0; byte < 256; ++byte) encoding->map[byte] = byte;
  encoding->data = nullptr;
  encoding->convert = nullptr;
  encoding->release = nullptr;
  return XML_STATUS_OK;
}

}  // namespace

// The functions that expat calls. No exception may pass through expat, so each event is guarded.
struct XmlReader::Handlers {
  static XmlReader& reader(void* data) { return *static_cast<XmlReader*>(data); }

  static void start(void* data, const XML_Char* name, const XML_Char**) {
    reader(data).guarded([&] { reader(data).onStart(split(name)); });
  }
  static void end(void* data, const XML_Char*) {
    reader(data).guarded([&] { reader(data).onEnd(); });
  }
  static void text(void* data, const XML_Char* bytes, int length) {
    reader(data).guarded([&] { reader(data).onText({bytes, static_cast<std::size_t>(length)}); });
  }
  static void doctype(void* data, const XML_Char*, const XML_Char* systemId, const XML_Char*, int) {
    if (systemId) reader(data).guarded([&] { reader(data).onExternalDtd(systemId); });
  }
  static void entity(void* data, const XML_Char* name, int, const XML_Char*, int, const XML_Char*,
                     const XML_Char* systemId, const XML_Char*, const XML_Char* notation) {
    if (systemId && !notation) reader(data).guarded([&] { reader(data).onExternalEntity(name, systemId); });
  }
};

XmlReader::XmlReader(Kind kind)
    : parser_(kind == Kind::document ? XML_ParserCreateNS(nullptr, separator) : XML_ParserCreate(nullptr)) {
  if (!parser_) throw std::bad_alloc();
  XML_SetUserData(parser_.get(), this);
  XML_SetElementHandler(parser_.get(), &Handlers::start, &Handlers::end);
  XML_SetCharacterDataHandler(parser_.get(), &Handlers::text);
  XML_SetStartDoctypeDeclHandler(parser_.get(), &Handlers::doctype);
  XML_SetEntityDeclHandler(parser_.get(), &Handlers::entity);
  if (kind == Kind::prolog) XML_SetUnknownEncodingHandler(parser_.get(), &readBytewise, nullptr);
}

bool XmlReader::read(std::FILE* file) {
  Buffer buffer;
  std::string_view piece;
  do {
    piece = readPiece(file, buffer);
    onBytes(piece);
    if (!feed(piece, piece.empty())) return stopped_;
  } while (!piece.empty());
  return true;
}

bool XmlReader::feed(std::string_view piece, bool last) {
  if (XML_Parse(parser_.get(), piece.data(), static_cast<int>(piece.size()), last) == XML_STATUS_OK) return true;
  if (thrown_) std::rethrow_exception(thrown_);
  if (XML_GetErrorCode(parser_.get()) == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
  problem_ = "line " + std::to_string(line()) + ": " + XML_ErrorString(XML_GetErrorCode(parser_.get()));
  return false;
}

template <typename Event>
void XmlReader::guarded(Event event) {
  if (stopped_ || thrown_) return;
  try {
    event();
  } catch (...) {
    thrown_ = std::current_exception();
    XML_StopParser(parser_.get(), XML_FALSE);
  }
}

void XmlReader::stop() {
  stopped_ = true;
  XML_StopParser(parser_.get(), XML_FALSE);
}

std::uintmax_t XmlReader::eventStart() const {
  return static_cast<std::uintmax_t>(XML_GetCurrentByteIndex(parser_.get()));
}

std::uintmax_t XmlReader::eventEnd() const {
  return eventStart() + static_cast<std::uintmax_t>(XML_GetCurrentByteCount(parser_.get()));
}

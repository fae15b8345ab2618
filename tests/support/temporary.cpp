#include "temporary.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

TemporaryFolder::TemporaryFolder() {
  std::string pattern = std::filesystem::temp_directory_path() / "kvxdm-test-XXXXXX";
  if (!mkdtemp(pattern.data())) throw std::runtime_error("cannot make a temporary folder");
  path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() { std::filesystem::remove_all(path_); }

std::string TemporaryFolder::write(std::string_view name, std::string_view text) const {
  writeFile(file(name), text);
  return file(name);
}

std::string readFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) throw std::runtime_error("cannot read " + path);
  return {std::istreambuf_iterator<char>(stream), {}};
}

void writeFile(const std::string& path, std::string_view text) {
  std::ofstream stream(path, std::ios::binary);
  stream.write(text.data(), static_cast<std::streamsize>(text.size()));
  if (!stream.flush()) throw std::runtime_error("cannot write " + path);
}

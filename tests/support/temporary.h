// Files and folders that vanish with the test.
#ifndef KVXDM_TESTS_TEMPORARY_H
#define KVXDM_TESTS_TEMPORARY_H

#include <filesystem>
#include <string>
#include <string_view>

/** A folder that is removed with all in it at the end. */
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  /** The path of `name` in the folder. */
  std::string file(std::string_view name) const { return path_ / name; }
  /** Writes `text` into the file `name` and returns its path. */
  std::string write(std::string_view name, std::string_view text) const;

 private:
  std::filesystem::path path_;
};

std::string readFile(const std::string& path);
void writeFile(const std::string& path, std::string_view text);

#endif

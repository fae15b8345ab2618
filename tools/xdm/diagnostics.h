// What the tool tells on standard error.
#ifndef XDM_DIAGNOSTICS_H
#define XDM_DIAGNOSTICS_H

#include <stdexcept>
#include <string>
#include <string_view>

/** The command failed. `details` are further lines: where it happened and what to do. */
class Failure : public std::runtime_error {
 public:
  explicit Failure(const std::string& message, std::string details = {})
      : std::runtime_error(message), details_(std::move(details)) {}
  const std::string& details() const { return details_; }

 private:
  std::string details_;
};

/** The command line asks for something that the tool does not offer. */
class WrongUsage : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/** Keeps a warning for printWarnings: an error must be the first line on standard error, whatever was met before. */
void warn(const std::string& text);
void printWarnings();
/** From here on printWarnings prints nothing. */
void silenceWarnings();

/** Prints "xdm: error: " and `message` on one line, then `details` on lines of their own. */
void printError(std::string_view message, std::string_view details = {});

#endif

// Output.h - where the bytes of a command go: whole, or not at all.
#ifndef TARN_CONSOLE_OUTPUT_H
#define TARN_CONSOLE_OUTPUT_H

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tarn::host {

// Exactly the bytes; a console of Windows shows them as text. Throws Failure (Failed) when they
// could not all be written.
void WriteToStandardOutput(std::string_view bytes);

// Standard output without a path and for "-", else that file. A file appears under its name when it
// is complete, in place of one that was there and with its permissions; a link stays, and it is the
// file that it leads to that is made or replaced. Devices and pipes are written to as they are, and
// a console of Windows shows the bytes as the text that they are in UTF-8.
class OutputFile {
 public:
  // Throws Failure (Usage) when the place cannot be written to, is for reading alone or is `source`
  // itself.
  OutputFile(const std::optional<std::string>& path, const std::string& source);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  // Without finish() no file has changed.
  ~OutputFile();

  // Throws Failure (Failed).
  void write(std::string_view bytes);
  // As write(), and Usage where the file cannot be put in its place.
  void finish();

  class Place;

 private:
  std::unique_ptr<Place> place_;
};

// Writes the bytes to such a place, whole or not at all. Throws as that does.
void WriteOutput(const std::optional<std::string>& path, const std::string& source,
                 std::string_view bytes);

}  // namespace tarn::host

#endif

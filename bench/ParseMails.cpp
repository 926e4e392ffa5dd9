// Parses mails with GMime alone, for archive-mails.sh: each file of a folder, or all mails of an
// mbox. Their contents stay in the files, and nothing of them is decoded.
//
// Usage: ParseMails FOLDER | MBOX
#include <gmime/gmime.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

std::vector<std::string> FilesOf(const fs::path& path) {
  std::vector<std::string> files;
  if (!fs::is_directory(path)) return {path.string()};
  for (const fs::directory_entry& entry : fs::directory_iterator(path)) {
    files.push_back(entry.path().string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

// How many mails there are.
size_t Parse(const std::string& file, GMimeFormat format) {
  GMimeStream* const stream = g_mime_stream_file_open(file.c_str(), "r", nullptr);
  if (stream == nullptr) return 0;
  GMimeParser* const parser = g_mime_parser_new_with_stream(stream);
  g_mime_parser_set_format(parser, format);
  size_t count = 0;
  do {
    GMimeMessage* const message = g_mime_parser_construct_message(parser, nullptr);
    if (message == nullptr) break;
    ++count;
    g_object_unref(message);
  } while (format == GMIME_FORMAT_MBOX && g_mime_parser_eos(parser) == FALSE);
  g_object_unref(parser);
  g_object_unref(stream);
  return count;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::fprintf(stderr, "usage: ParseMails FOLDER | MBOX\n");
    return 2;
  }
  g_mime_init();
  const bool isFolder = fs::is_directory(arguments[1]);
  size_t mails = 0;
  for (const std::string& file : FilesOf(arguments[1])) {
    mails += Parse(file, isFolder ? GMIME_FORMAT_MESSAGE : GMIME_FORMAT_MBOX);
  }
  std::printf("%zu mails\n", mails);
  return 0;
}

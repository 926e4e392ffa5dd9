// MakeIndexPage DIR COUNT PORT [single] - an export of so many mails, as far as its page needs it:
// every item has a row, and the first ones have files, which ask a server at that port for a
// picture. With "single" each is a file of its own, in one of ten folders, beside a store of 3000
// folders.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "archive/catalogue/IndexWriter.h"

namespace tarn::archive {
namespace {

// What a hostile mail would do, were it let: run a script, and ask a server. With the rules that
// exported messages have.
std::string Body(size_t number, const std::string& port) {
  const std::string text = std::to_string(number);
  return "<!DOCTYPE html><meta http-equiv=Content-Security-Policy content=\"default-src 'none'; "
         "img-src data:; style-src 'unsafe-inline'\"><meta charset=utf-8><title>mail</title><body>"
         "<h1>Message " +
         text +
         "</h1><p>Dear reader, the figures are below.</p>"
         "<img id=drawn width=40 height=30 alt=red src='data:image/png;base64,"
         "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAIAAACQd1PeAAAADElEQVR4nGP4z8AAAAMBAQDJ/"
         "pLvAAAAAElFTkSuQmCC'>"
         "<img src='http://127.0.0.1:" +
         port +
         "/beacon.png' alt=''>"
         "<script>document.title='ran';parent.postMessage('ran','*')</script>";
}

CatalogueItem ItemOf(size_t number) {
  constexpr const char* kSenders[] = {"Ann Example", "Bob Builder", "金田 一郎", "دانا", "Zoë"};
  constexpr const char* kSubjects[] = {"Budget for May", "Re: lunch on Friday", "会議のお知らせ",
                                       "Your invoice", "<img src=x onerror=alert(1)>"};
  const std::string text = std::to_string(number);
  CatalogueItem item;
  item.source = number % 3 == 0 ? "/mail/private.mbox" : "/mail/box.pst";
  item.id = text;
  item.folder = {"Top of Personal Folders", number % 4 == 0 ? "Sent" : "Inbox"};
  if (number % 7 == 0) item.folder.push_back("Project \"x\" \\ 'y'");
  item.fields.messageClass = number % 11 == 0 ? "IPM.Appointment" : "IPM.Note";
  item.fields.subject = std::string(kSubjects[number % 5]) + " " + text;
  item.fields.from = {kSenders[number % 5], "sender" + text + "@example.com"};
  item.fields.to = {{"Bob", "bob@example.com"}, {"", "carl@example.com"}};
  item.fields.sent = Moment{1600000000 + static_cast<int64_t>(number) * 3600, std::nullopt};
  item.fields.size = 1000 + number * 17;
  const std::string folder = "box/Inbox/" + text + " a#b%c/";
  if (number % 10 == 9) {
    item.status = ExportStatus::Partial;
    item.reason = "an attachment is damaged";
  }
  item.files.push_back({folder + "message.html", "html", 100, std::string(64, 'a'), "", 0});
  item.files.push_back({folder + "message.eml", "eml", 100, std::string(64, 'a'), "", 0});
  if (number % 3 == 1) {
    item.files.push_back({folder + "attachments/plan " + text + ".pdf", "attachment", 123456,
                          std::string(64, 'b'), "plan " + text + ".pdf", 1});
  }
  return item;
}

void MakeSingle(CatalogueItem& item, size_t number) {
  const std::string text = std::to_string(number);
  item.source = "/mail/d" + std::to_string(number % 10) + "/" + text + ".eml";
  item.folder.clear();
  if (number >= 6000) return;
  item.source = "/mail/store.pst";
  item.folder = {"Top", "Folder " + std::to_string(number % 3000)};
}

int Make(const std::filesystem::path& directory, size_t count, const std::string& port,
         bool isSingle) {
  auto writer = IndexWriter::create(directory);
  if (!writer) {
    std::cerr << writer.trouble().reason << '\n';
    return 1;
  }
  for (size_t number = 0; number < count; ++number) {
    CatalogueItem item = ItemOf(number);
    if (isSingle) MakeSingle(item, number);
    if ((*writer)->add(item)) return 1;
    if (number >= 20) continue;
    const std::filesystem::path file = directory / item.files.front().path;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file) << Body(number, port);
  }
  return (*writer)->finish() ? 1 : 0;
}

}  // namespace
}  // namespace tarn::archive

int main(int argc, char** argv) {
  if (argc != 4 && argc != 5) return 2;
  return tarn::archive::Make(argv[1], std::strtoul(argv[2], nullptr, 10), argv[3], argc == 5);
}

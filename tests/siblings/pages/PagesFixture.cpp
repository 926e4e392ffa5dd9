#include "PagesFixture.h"

#include <unistd.h>

#include <chrono>

#include "siblings/Processes.h"
#include "support/RtfCompressor.h"
#include "support/SampleMails.h"
#include "support/msg/MsgBuilder.h"

namespace tarn::test {

namespace fs = std::filesystem;

std::string RtfMail(std::string_view rtf) {
  MsgBuilder message;
  message.text(0x0037, u"Hello").text(0x0C1A, u"Ann").binary(0x1009, PackRtf(rtf));
  return message.write();
}

std::string PagesFixture::longTextMail() {
  std::string text = kSampleFields + "\r\n";
  for (int i = 0; i < 20000; ++i) text += "line\r\n";
  return mail(text);
}

std::string PagesFixture::longRtfMail() {
  std::string rtf = R"({\rtf1\ansi{\fonttbl{\f0 Arial;}}\f0 )";
  for (int i = 0; i < 200; ++i) rtf += R"(a page\page )";
  return mail(RtfMail(rtf + "the last}"), "mail.msg");
}

ProgramCall PagesFixture::pagesCall(const std::vector<std::string>& words) const {
  ProgramCall call;
  call.program = TARNMAIL_PATH;
  call.environment = environment_;
  call.workingDirectory = directory_.path();
  call.arguments = {"pages"};
  call.arguments.insert(call.arguments.end(), words.begin(), words.end());
  return call;
}

bool PagesFixture::waitForAPage(const fs::path& parent, const RunningProgram& program) {
  while (!program.hasEnded()) {
    for (const fs::directory_entry& entry : fs::directory_iterator(parent)) {
      if (entry.path().extension() == ".part" && fs::exists(entry.path() / "page-0001.png"))
        return true;
    }
    usleep(1000);
  }
  return false;
}

bool PagesFixture::waitForAHelper(const RunningProgram& program) {
  while (!program.hasEnded()) {
    if (!helpersOf(program).empty()) return true;
    usleep(1000);
  }
  return false;
}

std::vector<pid_t> PagesFixture::helpersOf(const RunningProgram& program) {
  return DescendantsOf(program.process(), fs::path(TARNMAIL_PATH).parent_path().string());
}

std::vector<pages::Descriptor> PagesFixture::startedBy(const RunningProgram& program) {
  std::vector<pages::Descriptor> started;
  for (const pid_t process : DescendantsOf(program.process())) {
    pages::Descriptor handle = pages::OpenProcess(process);
    if (handle) started.push_back(std::move(handle));
  }
  EXPECT_FALSE(started.empty());
  return started;
}

void PagesFixture::expectGone(const std::vector<pages::Descriptor>& processes) {
  for (const pages::Descriptor& process : processes) {
    EXPECT_TRUE(pages::WaitForProcess(process, std::chrono::seconds(30)));
    pages::KillProcess(process);
  }
}

}  // namespace tarn::test

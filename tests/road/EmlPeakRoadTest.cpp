// The memory that a call for a mail takes at most, in proportion to the file: through the exports,
// from reading it to the document that the sibling gets.

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "support/EmlBuilder.h"
#include "support/FakeHost.h"
#include "support/PeakMemory.h"
#include "support/Texts.h"

namespace tarn::test {
namespace {

constexpr uint64_t kMebibyte = uint64_t{1} << 20;

// How long images may make the body of a file, and what a call may take.
uint64_t BodyBound(const std::string& mail) { return 64 * kMebibyte + 16 * mail.size(); }
uint64_t PeakBound(const std::string& mail) { return 192 * kMebibyte + 32 * mail.size(); }

// A page whose <head> asks for a declaration, so that the document is once more made anew.
EmlEntity Page(std::string_view body) {
  return EmlEntity::Leaf("text/html", "<html><head></head><body>" + std::string(body));
}

EmlEntity Image(std::string_view name, uint64_t bytes) {
  return EmlEntity::Leaf("image/png; name=" + std::string(name), std::string(bytes, 'x'))
      .contentId(name)
      .encoded(EmlEncoding::Base64);
}

std::string Mail(const std::vector<EmlEntity>& parts) {
  EmlEntity body = EmlEntity::Multipart("related", "sep");
  for (const EmlEntity& part : parts) body.part(part);
  return EmlBuilder::Usual().body(body).build();
}

class EmlPeak : public ::testing::Test {
 protected:
  EmlPeak() { PlainKernelSetIoMode(3); }
  ~EmlPeak() override { PlainKernelSetIoMode(0); }

  // Shows the mail in memory within the bound; the document's length, or 0 when it was refused.
  static uint64_t Show(const std::string& mail) {
    FakeHost host(mail);
    int32_t status = 0;
    EXPECT_LE(PeakOf([&] { status = host.info(); }), PeakBound(mail));
    return status == StatusOk ? host.calls.at(0).document.size() : 0;
  }
};

TEST_F(EmlPeak, OfOneImageReferredToAsOftenAsTheBodyMayHold) {
  for (const uint64_t bytes : {uint64_t{60}, uint64_t{140000}, uint64_t{4000000}}) {
    const uint64_t url = 18 + (bytes + 2) / 3 * 4;
    const EmlEntity image = Image("a", bytes);
    // The references are part of the file that the bound goes by.
    const uint64_t most = BodyBound(Mail({Page(""), image})) / (url + 12);
    const uint64_t shown = Show(Mail({Page(Repeat("<img src=\"cid:a\">", most)), image}));
    EXPECT_GT(shown, most * url) << bytes;
    if (bytes < 100) continue;  // its references let the body grow by as much as it does
    EXPECT_EQ(Show(Mail({Page(Repeat("<img src=\"cid:a\">", 3 * most)), image})), 0u) << bytes;
  }
}

// The second image is found in the first one's URLs, and takes their places one by one.
TEST_F(EmlPeak, OfAnImageThatIsFoundInAnother) {
  const uint64_t bytes = 300000;
  const std::string first = Mail({Page(""), Image("a", bytes)});
  const uint64_t most = BodyBound(first) / (bytes / 3 * 4 + 12);
  const std::string mail =
      Mail({Page(Repeat("<img src=\"cid:a\">", most)), Image("a", bytes), Image("base64", bytes)});
  EXPECT_GT(Show(mail), most * bytes);
}

TEST_F(EmlPeak, OfThousandsOfImages) {
  std::string page;
  std::vector<EmlEntity> parts = {Page("")};
  for (int i = 0; i < 5000; ++i) {
    const std::string name = "picture" + std::to_string(i) + ".png";
    page += "<img src=\"cid:" + name + "\">";
    parts.push_back(Image(name, 100));
  }
  parts[0] = Page(page);
  EXPECT_GT(Show(Mail(parts)), 5000u * 130);
}

TEST_F(EmlPeak, OfATextThatBecomesLonger) {
  const std::string mail = Mail({EmlEntity::Leaf("text/html; charset=windows-1252",
                                                 "<head>" + std::string(8000000, '\x80'))});
  EXPECT_GT(Show(mail), 24000000u);
}

TEST_F(EmlPeak, OfAnExtractionIsTheFileAndTheContentOnce) {
  const std::string content(8000000, 'c');
  for (const EmlEncoding encoding :
       {EmlEncoding::None, EmlEncoding::Base64, EmlEncoding::QuotedPrintable}) {
    const std::string mail = Mail(
        {Page("hi"), EmlEntity::Leaf("a/b", content).encoded(encoding).disposition("attachment")});
    const uint64_t bound = mail.size() + content.size() / 5 * 6;
    FakeHost host(mail);
    EXPECT_LE(PeakOf([&] { EXPECT_EQ(host.extract(1), StatusOk); }), bound);
    const auto data = Copy(host.extractContext->data);
    EXPECT_EQ(Copy(host.extractContext->size), content.size());
    KernelFree(data, TARN_HERE);

    const std::u16string output = (host.directory().path() / "output").u16string();
    EXPECT_LE(PeakOf([&] { EXPECT_EQ(host.extract(1, output.c_str()), StatusOk); }), bound);
    EXPECT_TRUE(ReadWholeFile(host.directory().path() / "output") == content);
  }
}

}  // namespace
}  // namespace tarn::test

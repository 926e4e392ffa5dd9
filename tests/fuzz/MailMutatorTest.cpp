// Mutants of mails: contents change under their encodings, and parts stay parts.
#include "mutators/MailMutator.h"

#include <gtest/gtest.h>

#include <set>

#include "PlainBytes.h"
#include "mutators/MailTree.h"
#include "support/SampleMails.h"

namespace tarn::test {
namespace {

TEST(MailMutator, TakesAnyBytes) { ExpectTakesAnyBytes(fuzz::MutateMail, kImageMail); }

TEST(MailMutator, PartsStayParts) {
  size_t count = 0;
  size_t multiparts = 0;
  std::set<size_t> partCounts;
  std::set<std::string> images;
  MakeMutants(fuzz::MutateMail, kImageMail, 10000, 400, [&](const std::string& mutant) {
    ++count;
    const fuzz::MailEntity mail = fuzz::ReadMail(mutant);
    multiparts += mail.isMultipart() ? 1 : 0;
    partCounts.insert(mail.parts.size());
    for (const fuzz::MailEntity& part : mail.parts) {
      if (FieldValue(part, "content-transfer-encoding") == "base64") {
        images.insert(DecodeContent(part));
      }
    }
  });
  EXPECT_GE(count, 380U);
  EXPECT_GE(multiparts, 300U);
  EXPECT_GE(partCounts.size(), 5U);
  EXPECT_GE(images.size(), 20U);
}

TEST(MailMutator, GrowsToTheLimit) {
  size_t longest = 0;
  MakeMutants(fuzz::MutateMail, kImageMail, 1 << 20, 2000,
              [&](const std::string& mutant) { longest = std::max(longest, mutant.size()); });
  EXPECT_GE(longest, size_t{1} << 16);
}

}  // namespace
}  // namespace tarn::test

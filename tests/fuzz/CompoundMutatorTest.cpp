// Mutants of compound files: many load, and differ in what they hold.
#include "mutators/CompoundMutator.h"

#include <gtest/gtest.h>

#include <set>

#include "PlainBytes.h"
#include "compound/CompoundStream.h"
#include "support/MemoryMail.h"
#include "support/msg/MsgBuilder.h"

namespace tarn::test {
namespace {

std::string Message() {
  MsgBuilder msg;
  msg.text(0x0037, u"Subject").binary(0x1013, std::string(5000, 'h')).integer(0x0017, 2);
  msg.attachment(u"a.png", "bytes").contentId(u"a@x");
  msg.attachment().embedded().text(0x0037, u"Inner");
  return msg.write();
}

TEST(CompoundMutator, TakesAnyBytes) { ExpectTakesAnyBytes(fuzz::MutateCompoundFile, Message()); }

TEST(CompoundMutator, MutantsStillLoad) {
  const std::string file = Message();
  size_t count = 0;
  size_t loaded = 0;
  std::set<std::string> names;
  std::set<std::string> mutants;
  MakeMutants(fuzz::MutateCompoundFile, file, 100000, 300, [&](const std::string& mutant) {
    ++count;
    mutants.insert(mutant);
    const MemoryMail mail(mutant);
    CompoundFile opened = CompoundFile::open(mail.handle());
    if (opened.result() != CompoundOk) return;
    ++loaded;
    for (const auto& name : opened.list("/")) names.emplace(name);
  });
  EXPECT_GE(count, 290U);
  EXPECT_GE(mutants.size(), 200U);
  EXPECT_GE(loaded, 240U);
  EXPECT_GE(names.size(), 15U);
}

}  // namespace
}  // namespace tarn::test

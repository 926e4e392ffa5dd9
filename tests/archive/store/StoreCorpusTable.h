// StoreCorpusTable.h - what the stores of the corpus hold, as StoreItemCorpusTest describes it.
#ifndef TARN_TESTS_ARCHIVE_STORE_STORECORPUSTABLE_H
#define TARN_TESTS_ARCHIVE_STORE_STORECORPUSTABLE_H

#include <map>
#include <string>

namespace tarn::archive {

inline const std::map<std::string, std::string>& StoresOfCorpus() {
  static const std::map<std::string, std::string> stores = [] {
    const std::string pictures =
        " f9e8378e222bd880 3e57f0b84aa2d69b 742897e03cc595bd 4d0bf6c40227c165 30e59fcbf76bf55e"
        " 695fc62246ec6548 f98eacdfff965439 fb36c0ea1c31f23c";
    const std::string first = "8273d97f" + pictures + "\n";
    const std::string forwarded = "af937fb9" + pictures + " b0ff802b28eb8e44\n";
    std::string inTurn;
    for (int i = 0; i < 10; ++i) inTurn += first + forwarded;
    return std::map<std::string, std::string>{
        {"ansi-many.pst", "/Deleted Items 200024\n73 x " + first},
        {"ansi-small.pst", ""},
        {"unicode-archive.pst", ""},
        {"unicode-cyclic-encoding.pst",
         "/Deleted Items 200024\n10 x " + forwarded + "22 x " + first + "4 x " + forwarded},
        {"unicode-flags.pst",
         "/Inbox 200064\n7e1276a6\n47df410c\n67f66b7b\n/Deleted Items "
         "2000e4\nc0719e9a\n7e1276a6\n/Sent Items "
         "2000c4\n21dab1eb\n39875e92\n5389cfe7\n9322ef46\na38e6544\n"},
        {"unicode-multiple-recipients.pst", "/Inbox 200224\n3d984748\n"},
        {"unicode-nested-folders.pst",
         "/Inbox 2002c4\n85215c9e [26467632 [c35ff1d9 66b01763ad803167]]\n"},
        {"unicode-plain-encoding.pst", "/Deleted Items 200024\n" + inTurn},
        {"unicode-rules.pst",
         "/Deleted Items 200024\nc88a0b90\naae561a0\n41cfeb73\n/Sent Items "
         "200084\nc88a0b90\n/Archive 2000a4\n4 x 4fb0c05f\n/Contacts "
         "200124\n6007db63\n/Contacts/Recipient Cache 200144\n37928e55\n/PersonMetadata "
         "200164\ne3b0c442\n"},
    };
  }();
  return stores;
}

}  // namespace tarn::archive

#endif

// FaultFiles.h - the files that the fault sweeps read.
#ifndef TARN_TESTS_ROAD_FAULTS_FAULTFILES_H
#define TARN_TESTS_ROAD_FAULTS_FAULTFILES_H

#include <string>

namespace tarn::test {

std::string PlainMail();
std::string HtmlMail();
std::string ImageMail();
std::string AttachmentMail();
std::string CharsetMail();
std::string AlternativeMail();
std::string RawFieldMail();
std::string NestedMail();
std::string NamedMail();
std::string JapaneseMail();
std::string FileMail();
std::string BigMail();
std::string PlainMsgFile();
std::string AttachedMsgFile();
std::string HtmlMsgFile();
std::string RtfMsgFile();
std::string WrappedMsgFile();
std::string OldMsgFile();
std::string BigMsgFile();
std::string LargeMsgFile();
std::string RichMail();
std::string RepairedMail();
std::string TwoImagesMail();
std::string TwoImagesMsgFile();
std::string OldAttachmentMsgFile();
std::string UnicodeStore();
std::string AnsiStore();
std::string RtfStore();
std::string AnsiRtfStore();
std::string OpenStore();
std::string AnsiOpenStore();
std::string CyclicStore();
std::string AnsiCyclicStore();
std::string UsualStore();
std::string WrappedStore();
std::string TwoImagesStore();
std::string LargeStore();
std::string EmbeddingStore();

}  // namespace tarn::test

#endif

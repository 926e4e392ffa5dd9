// Mails of many parts, header fields, levels and images.
#include "support/hostile/HostileShapes.h"
#include "support/hostile/HostileText.h"

namespace tarn::test {
namespace {

constexpr std::string_view kFields =
    "From: Ann <ann@example.com>\r\nTo: Bob <bob@example.com>\r\nSubject: Shape\r\n"
    "Date: Wed, 1 May 2024 12:34:56 +0200\r\nMIME-Version: 1.0\r\n";
constexpr std::string_view kText = "Content-Type: text/plain\r\n\r\nText\r\n";
constexpr std::string_view kHtmlPart = "--b\r\nContent-Type: text/html\r\n\r\n<p>Text</p>\r\n";

std::string WithFields(std::string_view fields) {
  return std::string(kFields) + std::string(fields) + std::string(kText);
}

std::string Multipart(std::string_view subtype, std::string_view parts) {
  return std::string(kFields) + "Content-Type: multipart/" + std::string(subtype) +
         "; boundary=\"b\"\r\n\r\n" + std::string(kHtmlPart) + std::string(parts) + "--b--\r\n";
}

std::string Parts(size_t count) {
  return Multipart("mixed", Times(count, "--b\r\nContent-Type: text/plain\r\n\r\nText\r\n"));
}

std::string Attachments(size_t count) {
  return Multipart("mixed", Each(count, [](const std::string& number) {
                     return "--b\r\nContent-Type: application/octet-stream\r\nContent-Disposition: "
                            "attachment; filename=\"" +
                            number + ".bin\"\r\n\r\ncontent\r\n";
                   }));
}

std::string SameNames(size_t count) {
  return Multipart("mixed", Times(count,
                                  "--b\r\nContent-Type: a/b\r\nContent-Disposition: attachment; "
                                  "filename=\"a.txt\"\r\n\r\ncontent\r\n"));
}

std::string Alternatives(size_t count) {
  return Multipart("alternative",
                   Times(count, "--b\r\nContent-Type: text/html\r\n\r\n<p>Text</p>\r\n"));
}

std::string NearDelimiters(size_t count) {
  return Multipart("mixed", "--b\r\n\r\n" + Times(count, "--a\r\n-\r\n--\r\nb\r\n"));
}

// Parts whose headers are all there is of them, without the line that ends a header.
std::string PartsWithoutContent(size_t count) {
  return Multipart("mixed", Times(count, "--b\r\nContent-Type: text/html\r\n"));
}

std::string HeaderFields(size_t count) {
  return WithFields(
      Each(count, [](const std::string& n) { return "X-Field-" + n + ": value\r\n"; }));
}

std::string SameFields(size_t count) { return WithFields(Times(count, "Subject: Again\r\n")); }

std::string FoldedLines(size_t count) {
  return WithFields("Received: a\r\n" + Times(count, " by b; c=\"d\"\r\n"));
}

std::string Addresses(size_t count) {
  return WithFields(
      "Cc: a@b.c" +
      Each(count,
           [](const std::string& n) { return ",\r\n Person " + n + " <" + n + "@example.com>"; }) +
      "\r\n");
}

std::string NestedComments(size_t count) { return WithFields("Cc: " + Times(count, "(") + "\r\n"); }

std::string NestedGroups(size_t count) { return WithFields("Cc: " + Times(count, "a:") + "\r\n"); }

std::string QuotedNames(size_t count) { return WithFields("Cc: " + Times(count, "\"\\") + "\r\n"); }

std::string EncodedWords(size_t count) {
  return WithFields("X: y\r\nSubject: a" + Times(count, "\r\n =?iso-8859-1?Q?=E4b?=") + "\r\n");
}

std::string UnendedWords(size_t count) {
  return WithFields("X: y\r\nSubject: a" + Times(count, "=?utf-8?B?") + "\r\n");
}

std::string Parameters(size_t count) {
  return std::string(kFields) + "Content-Type: text/plain" +
         Each(count, [](const std::string& n) { return ";\r\n p" + n + "=value"; }) +
         "\r\n\r\nText\r\n";
}

// RFC 2231: one parameter in pieces, from the last to the first.
std::string ParameterPieces(size_t count) {
  std::string pieces;
  for (size_t i = count; i-- > 0;) pieces += ";\r\n filename*" + std::to_string(i) + "=\"a\"";
  return Multipart("mixed", "--b\r\nContent-Type: a/b\r\nContent-Disposition: attachment" + pieces +
                                "\r\n\r\ncontent\r\n");
}

std::string MessageIds(size_t count) {
  return WithFields("References: " + Times(count, "<a@example.com>\r\n ") + "\r\n");
}

std::string NestedMultiparts(size_t count) {
  return std::string(kFields) +
         Each(count,
              [](const std::string& n) {
                return "Content-Type: multipart/mixed; boundary=b" + n + "e\r\n\r\n\r\n--b" + n +
                       "e\r\n";
              }) +
         std::string(kText);
}

// One boundary for all levels.
std::string NestedInOneBoundary(size_t count) {
  return Multipart("mixed",
                   Times(count, "--b\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n"));
}

std::string NestedMails(size_t count) {
  return Times(count, std::string(kFields) + "Content-Type: message/rfc822\r\n\r\n") +
         std::string(kFields) + std::string(kText);
}

std::string AttachedMails(size_t count) {
  return Multipart("mixed", Times(count, "--b\r\nContent-Type: message/rfc822\r\n\r\n" +
                                             std::string(kFields) + std::string(kText)));
}

std::string ImageParts(size_t count) {
  return Each(count, [](const std::string& n) {
    return "--b\r\nContent-Type: image/png; name=\"" + n + ".png\"\r\nContent-ID: <id" + n +
           "@x>\r\nContent-Transfer-Encoding: base64\r\n\r\n" + Times(25, "iVBO") + "\r\n";
  });
}

std::string HtmlPart(const std::string& html) {
  return "--b\r\nContent-Type: text/html\r\n\r\n" + html + "\r\n";
}

std::string Related(const std::string& parts) {
  return std::string(kFields) + "Content-Type: multipart/related; boundary=b\r\n\r\n" + parts +
         "--b--\r\n";
}

std::string Images(size_t count) {
  return Related(
      HtmlPart(
          Each(count, [](const std::string& n) { return "<img src=\"cid:id" + n + "@x\">\r\n"; })) +
      ImageParts(count));
}

std::string ReferencesToOneImage(size_t count) {
  return Related(HtmlPart(Times(count, "<img src=\"cid:id0@x\">\r\n")) + ImageParts(1));
}

// Each is looked for in a body that is as long as all of them.
std::string ImagesWithoutReferences(size_t count) {
  return Related(HtmlPart(Times(count, "<img src=\"cid:ie0@x\">\r\n")) + ImageParts(count));
}

// Names that begin alike: an image whose name is the beginning of others.
std::string ReferencesThatBeginAlike(size_t count) {
  return Related(HtmlPart(Times(count, "<img src=\"cid:id")) + ImageParts(100));
}

std::string TnefParts(size_t count) {
  return Multipart("mixed",
                   Times(count,
                         "--b\r\nContent-Type: application/ms-tnef; name=\"winmail.dat\"\r\n"
                         "Content-Transfer-Encoding: base64\r\n\r\neJ8+IgEA\r\n"));
}

std::string Uuencoded(size_t count) {
  return std::string(kFields) + "\r\n" + Times(count, "begin 644 a\r\n#0V%T\r\n`\r\nend\r\n");
}

std::string UnendedUuencoding(size_t count) {
  return std::string(kFields) + "\r\n" + Times(count, "begin 644 a\r\n");
}

constexpr HostileShape kShapes[] = {
    {"Parts", HostileFormat::Mail, Parts, 20000},
    {"Attachments", HostileFormat::Mail, Attachments, 5000},
    {"SameNames", HostileFormat::Mail, SameNames, 5000},
    {"Alternatives", HostileFormat::Mail, Alternatives, 20000},
    {"NearDelimiters", HostileFormat::Mail, NearDelimiters, 60000},
    {"PartsWithoutContent", HostileFormat::Mail, PartsWithoutContent, 20000},
    {"HeaderFields", HostileFormat::Mail, HeaderFields, 40000},
    {"SameFields", HostileFormat::Mail, SameFields, 60000},
    {"FoldedLines", HostileFormat::Mail, FoldedLines, 60000},
    {"Addresses", HostileFormat::Mail, Addresses, 25000},
    {"NestedComments", HostileFormat::Mail, NestedComments, 200000},
    {"NestedGroups", HostileFormat::Mail, NestedGroups, 200000},
    {"QuotedNames", HostileFormat::Mail, QuotedNames, 200000},
    {"EncodedWords", HostileFormat::Mail, EncodedWords, 40000},
    {"UnendedWords", HostileFormat::Mail, UnendedWords, 60000},
    {"Parameters", HostileFormat::Mail, Parameters, 40000},
    {"ParameterPieces", HostileFormat::Mail, ParameterPieces, 20000},
    {"MessageIds", HostileFormat::Mail, MessageIds, 50000},
    {"NestedMultiparts", HostileFormat::Mail, NestedMultiparts, 10000},
    {"NestedInOneBoundary", HostileFormat::Mail, NestedInOneBoundary, 10000},
    {"NestedMails", HostileFormat::Mail, NestedMails, 4000},
    {"AttachedMails", HostileFormat::Mail, AttachedMails, 2000},
    {"Images", HostileFormat::Mail, Images, 2000},
    {"ReferencesToOneImage", HostileFormat::Mail, ReferencesToOneImage, 10000},
    {"ImagesWithoutReferences", HostileFormat::Mail, ImagesWithoutReferences, 2000},
    {"ReferencesThatBeginAlike", HostileFormat::Mail, ReferencesThatBeginAlike, 40000},
    {"TnefParts", HostileFormat::Mail, TnefParts, 5000},
    {"Uuencoded", HostileFormat::Mail, Uuencoded, 5000},
    {"UnendedUuencoding", HostileFormat::Mail, UnendedUuencoding, 60000},
};

}  // namespace

std::span<const HostileShape> HostileMails() { return kShapes; }

const char* ExtensionOf(HostileFormat format) {
  switch (format) {
    case HostileFormat::Mail:
      return "eml";
    case HostileFormat::Msg:
      return "msg";
    case HostileFormat::Store:
      return "pst";
    case HostileFormat::Tnef:
      return "dat";
    default:
      return "mbox";
  }
}

}  // namespace tarn::test

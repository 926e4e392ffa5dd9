#include "archive/pdf/MailMetadata.h"

#include <cstddef>
#include <string_view>

#include "archive/text/Charsets.h"

namespace tarn::archive {
namespace {

// XML 1.0 has no room for control characters, nor for the last two code points of the first plane.
bool IsInXml(std::string_view character) {
  if (character.size() == 1) {
    const auto c = static_cast<unsigned char>(character[0]);
    return c >= 0x20 || c == '\t' || c == '\n' || c == '\r';
  }
  return character != "\xEF\xBF\xBE" && character != "\xEF\xBF\xBF";
}

size_t LengthOfCharacter(char first) {
  const auto c = static_cast<unsigned char>(first);
  if (c < 0x80) return 1;
  if (c < 0xE0) return 2;
  return c < 0xF0 ? 3 : 4;
}

void AppendXml(std::string_view text, std::string& xml) {
  std::string valid;
  AppendUtf8(text, valid);
  for (size_t at = 0; at < valid.size();) {
    const std::string_view character =
        std::string_view(valid).substr(at, LengthOfCharacter(valid[at]));
    at += character.size();
    if (character == "<") {
      xml += "&lt;";
    } else if (character == ">") {
      xml += "&gt;";
    } else if (character == "&") {
      xml += "&amp;";
    } else if (character == "\r") {
      xml += "&#13;";
    } else if (IsInXml(character)) {
      xml += character;
    } else {
      xml += "\xEF\xBF\xBD";
    }
  }
}

class Packet {
 public:
  void property(std::string_view name, std::string_view value) {
    if (value.empty()) return;
    start(name);
    AppendXml(value, xml_);
    end(name);
  }

  // An ordered list.
  void list(std::string_view name, const std::vector<std::string>& values) {
    if (values.empty()) return;
    start(name);
    xml_ += "<rdf:Seq>";
    for (const std::string& value : values) property("rdf:li", value);
    xml_ += "</rdf:Seq>";
    end(name);
  }

  // The one language that there is.
  void title(std::string_view value) {
    if (value.empty()) return;
    start("dc:title");
    xml_ += "<rdf:Alt><rdf:li xml:lang=\"x-default\">";
    AppendXml(value, xml_);
    xml_ += "</rdf:li></rdf:Alt>";
    end("dc:title");
  }

  const std::string& xml() const { return xml_; }

 private:
  void start(std::string_view name) { xml_.append("<").append(name).append(">"); }
  void end(std::string_view name) { xml_.append("</").append(name).append(">\n"); }

  std::string xml_;
};

std::vector<std::string> OneOrNone(const std::string& text) {
  return text.empty() ? std::vector<std::string>() : std::vector<std::string>{text};
}

}  // namespace

std::string MailMetadata(const MailFacts& facts) {
  Packet packet;
  packet.property("dc:format", "application/pdf");
  packet.title(facts.subject);
  packet.list("dc:creator", OneOrNone(facts.from));
  packet.list("dc:date", OneOrNone(facts.sent));
  packet.property("xmp:CreateDate", facts.sent);
  packet.property("pdf:Producer", "tarnmail");
  packet.property("mail:from", facts.from);
  packet.list("mail:to", facts.to);
  packet.list("mail:cc", facts.cc);
  packet.list("mail:bcc", facts.bcc);
  packet.property("mail:sent", facts.sent);
  packet.property("mail:received", facts.received);
  packet.property("mail:messageId", facts.messageId);
  return "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>\n"
         "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">\n"
         "<rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">\n"
         "<rdf:Description rdf:about=\"\" xmlns:dc=\"http://purl.org/dc/elements/1.1/\""
         " xmlns:xmp=\"http://ns.adobe.com/xap/1.0/\" xmlns:pdf=\"http://ns.adobe.com/pdf/1.3/\""
         " xmlns:mail=\"" +
         std::string(kMailSchema) + "\">\n" + packet.xml() +
         "</rdf:Description>\n</rdf:RDF>\n</x:xmpmeta>\n<?xpacket end=\"r\"?>\n";
}

}  // namespace tarn::archive

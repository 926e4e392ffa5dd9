#include "mutators/MailMutator.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "mutators/MailTree.h"

namespace tarn::fuzz {
namespace {

constexpr std::string_view kFields[] = {
    "Content-Type: text/html; charset=utf-8\r\n",
    "Content-Type: text/plain; charset=\"iso-2022-jp\"\r\n",
    "Content-Type: text/plain; charset=windows-1252\r\n",
    "Content-Type: text/html; charset=shift_jis\r\n",
    "Content-Type: text/rtf\r\n",
    "Content-Type: message/rfc822\r\n",
    "Content-Type: image/png; name=\"pic.png\"\r\n",
    "Content-Type: application/octet-stream;\r\n name=\"=?utf-8?B?w6Q=?=\"\r\n",
    "Content-Disposition: attachment;\r\n creation-date=\"Sat, 21 Nov 2026 10:00:00 GMT\"\r\n",
    "Content-Disposition: inline; filename=\"pic.png\"\r\n",
    "Content-ID: <pic@x>\r\n",
    "Content-Location: pic.png\r\n",
    "Content-Description: =?iso-8859-1?Q?d=E9?=\r\n",
    "Content-Transfer-Encoding: 7bit\r\n",
    "Subject: =?iso-2022-jp?B?GyRCRnxLXBsoQg==?=\r\n",
    "Subject: =?utf-8?Q?=C3=A4?= =?utf-8?Q?=C3=B6?=\r\n",
    "From: \"A\" <a@b.c>\r\n",
    "To: a@b.c,\r\n\td@e.f\r\n",
    "Cc: x\r\n",
    "Bcc: y\r\n",
    "Date: Sat, 21 Nov 2026 10:00:00 +0000\r\n",
    "Importance: high\r\n",
    "X-Priority: 1\r\n"};

constexpr std::string_view kEncodings[] = {"base64", "quoted-printable", "7bit", "8bit"};
constexpr std::string_view kSubtypes[] = {"mixed", "related", "alternative", "report"};

class MailMutation {
 public:
  MailMutation(MailEntity& mail, size_t room, Dice& dice, const ByteMutation& mutate)
      : mail_(mail), room_(room), dice_(dice), mutate_(mutate) {
    collect(mail);
  }

  void change() {
    switch (dice_.below(16)) {
      default:
        return changeContent();
      case 5:
      case 6:
      case 7:
        return changeField();
      case 8:
        return moveField();
      case 9:
        return encodeAnew();
      case 10:
        return duplicatePart();
      case 11:
        return exchangeParts();
      case 12:
        return removePart();
      case 13:
        return nest();
      case 14:
        return changeBoundary();
      case 15:
        // Rarely: large inputs cost time in all runs after.
        return dice_.oneIn(8) ? repeat() : changeField();
    }
  }

 private:
  void collect(MailEntity& entity) {
    all_.push_back(&entity);
    if (!entity.isMultipart()) {
      leaves_.push_back(&entity);
      return;
    }
    multiparts_.push_back(&entity);
    for (MailEntity& part : entity.parts) collect(part);
  }

  void changeContent() {
    MailEntity& leaf = *dice_.pick(leaves_);
    std::string bytes = DecodeContent(leaf);
    mutate_(bytes, bytes.size() + room_ / 3);
    EncodeContent(leaf, bytes);
  }

  void changeField() {
    MailEntity& entity = *dice_.pick(all_);
    if (entity.lines.empty() || dice_.oneIn(4)) {
      const std::string_view field = dice_.pick(kFields);
      if (field.size() <= room_) insert(entity.lines, std::string(field));
      return;
    }
    std::string& line = dice_.pick(entity.lines);
    // The value alone, mostly.
    const size_t colon = line.find(':');
    const size_t end = line.find_last_not_of("\r\n");
    if (colon == std::string::npos || end < colon || dice_.oneIn(6)) {
      return mutate_(line, line.size() + room_);
    }
    std::string value = line.substr(colon + 1, end - colon);
    mutate_(value, value.size() + room_);
    line.replace(colon + 1, end - colon, value);
  }

  void moveField() {
    MailEntity& from = *dice_.pick(all_);
    if (from.lines.empty()) return;
    const size_t place = dice_.below(from.lines.size());
    std::string line = from.lines[place];
    if (line.size() > room_ || dice_.oneIn(2)) {
      from.lines.erase(from.lines.begin() + static_cast<std::ptrdiff_t>(place));
    }
    if (!dice_.oneIn(4)) insert(dice_.pick(all_)->lines, std::move(line));
  }

  void encodeAnew() {
    MailEntity& leaf = *dice_.pick(leaves_);
    const std::string bytes = DecodeContent(leaf);
    if (3 * bytes.size() > room_) return;
    SetField(leaf, "content-transfer-encoding", dice_.pick(kEncodings));
    EncodeContent(leaf, bytes);
  }

  // Into the same multipart or another.
  void duplicatePart() {
    if (multiparts_.empty()) return nest();
    const MailEntity copy = *dice_.pick(all_);
    if (WriteMail(copy).size() + mail_.boundary.size() > room_) return;
    MailEntity& target = *dice_.pick(multiparts_);
    addPart(target, copy);
  }

  void exchangeParts() {
    if (multiparts_.empty()) return;
    MailEntity& a = *dice_.pick(multiparts_);
    std::swap(dice_.pick(a.parts), dice_.pick(a.parts));
  }

  void removePart() {
    if (multiparts_.empty()) return;
    MailEntity& multipart = *dice_.pick(multiparts_);
    switch (dice_.below(3)) {
      case 0:
        multipart.ending.clear();
        break;
      case 1:
        multipart.delimiters.erase(multipart.delimiters.begin());
        multipart.parts.erase(multipart.parts.begin());
        break;
      default:
        multipart.delimiters.pop_back();
        multipart.parts.pop_back();
        break;
    }
  }

  // The entity becomes the only part of a multipart in its place.
  void nest() {
    MailEntity& entity = *dice_.pick(all_);
    constexpr size_t kRoom = 200;
    if (room_ < kRoom) return;
    MailEntity inner = std::move(entity);
    entity = MailEntity();
    if (&entity == &mail_) std::swap(entity.lines, inner.lines);
    takeContentFields(entity.lines, inner.lines);
    entity.separator = inner.separator = "\r\n";
    entity.boundary = "n" + std::to_string(dice_.below(100));
    std::string type = "multipart/";
    type.append(dice_.pick(kSubtypes)).append("; boundary=\"").append(entity.boundary).append("\"");
    SetField(entity, "content-type", type);
    addPart(entity, std::move(inner));
    entity.ending = "--" + entity.boundary + "--\r\n";
  }

  // What describes the content goes with it.
  static void takeContentFields(std::vector<std::string>& from, std::vector<std::string>& to) {
    const auto isContent = [](const std::string& line) {
      return line.starts_with("Content-") || line.starts_with("content-");
    };
    for (const std::string& line : from) {
      if (isContent(line)) to.push_back(line);
    }
    std::erase_if(from, isContent);
  }

  // Everywhere, or in one place alone.
  void changeBoundary() {
    if (multiparts_.empty()) return;
    MailEntity& multipart = *dice_.pick(multiparts_);
    std::string boundary = multipart.boundary;
    mutate_(boundary, boundary.size() + room_ / (multipart.parts.size() + 3));
    if (dice_.oneIn(4)) return replaceBoundary(dice_.pick(multipart.delimiters), boundary);
    for (std::string& line : multipart.lines) {
      const size_t place = line.find(multipart.boundary);
      if (place != std::string::npos) line.replace(place, multipart.boundary.size(), boundary);
    }
    if (dice_.oneIn(4)) return;
    for (std::string& delimiter : multipart.delimiters) replaceBoundary(delimiter, boundary);
    replaceBoundary(multipart.ending, boundary);
    // So that a shorter one ends no longer than it says.
    multipart.boundary = boundary;
  }

  void replaceBoundary(std::string& delimiter, const std::string& boundary) const {
    const size_t size = multipartBoundary(delimiter);
    if (size != 0) delimiter.replace(2, size, boundary);
  }

  static size_t multipartBoundary(std::string_view delimiter) {
    if (!delimiter.starts_with("--")) return 0;
    std::string_view text = delimiter.substr(2);
    text = text.substr(0, text.find_first_of("\r\n"));
    if (text.ends_with("--")) text.remove_suffix(2);
    return text.size();
  }

  // A field, a part or a content, up to 4096 times.
  void repeat() {
    const size_t times = size_t{1} << dice_.below(13);
    MailEntity& entity = *dice_.pick(all_);
    switch (dice_.below(3)) {
      case 0:
        if (entity.lines.empty() || entity.lines.back().size() * times > room_) return;
        entity.lines.insert(entity.lines.end(), times, std::string(entity.lines.back()));
        break;
      case 1: {
        if (!entity.isMultipart()) return;
        const MailEntity part = entity.parts.back();
        if ((WriteMail(part).size() + entity.delimiters.back().size()) * times > room_) return;
        for (size_t i = 0; i < times; ++i) addPart(entity, part);
        break;
      }
      default: {
        const std::string once = entity.content;
        if (once.size() * times > room_) return;
        for (size_t i = 0; i < times; ++i) entity.content += once;
        break;
      }
    }
  }

  void addPart(MailEntity& multipart, MailEntity part) const {
    multipart.delimiters.push_back("--" + multipart.boundary + "\r\n");
    multipart.parts.push_back(std::move(part));
  }

  void insert(std::vector<std::string>& lines, std::string line) {
    const auto place = static_cast<std::ptrdiff_t>(dice_.below(lines.size() + 1));
    lines.insert(lines.begin() + place, std::move(line));
  }

  MailEntity& mail_;
  size_t room_;
  Dice& dice_;
  const ByteMutation& mutate_;
  std::vector<MailEntity*> all_;
  std::vector<MailEntity*> leaves_;
  std::vector<MailEntity*> multiparts_;
};

// LF alone becomes CR LF, or the other way round.
void ChangeLineEnds(std::string& mail, size_t most) {
  std::string changed;
  const bool hasCr = mail.find("\r\n") != std::string::npos;
  for (size_t i = 0; i < mail.size(); ++i) {
    if (hasCr && mail[i] == '\r' && mail.substr(i + 1, 1) == "\n") continue;
    if (!hasCr && mail[i] == '\n') changed.push_back('\r');
    changed.push_back(mail[i]);
  }
  if (changed.size() <= most) mail = std::move(changed);
}

}  // namespace

bool MutateMail(std::string& mail, size_t most, Dice& dice, const ByteMutation& mutate) {
  if (dice.oneIn(5)) {
    mutate(mail, most);
    return true;
  }
  if (dice.oneIn(64)) ChangeLineEnds(mail, most);
  do {
    MailEntity tree = ReadMail(mail);
    const size_t room = most > mail.size() ? most - mail.size() : 0;
    MailMutation(tree, room, dice, mutate).change();
    mail = WriteMail(tree);
  } while (dice.oneIn(3) && mail.size() < most);
  return mail.size() <= most;
}

}  // namespace tarn::fuzz

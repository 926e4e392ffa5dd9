"""Reads what the archive writes with Python's email and mailbox, and with the archive's own reader.

Usage: read_back.py WRITE_FORMS READ_ICALENDAR FOLDER...

Each mail file of the folders, and of the folder that MAIL_CORPUS names, is written item by item as
mails and as one mbox. Subject, addresses, date, text, HTML and the SHA-256 of each attachment must
be those of the item, read by Python and by the archive alike; a mail that is written again has the
same bytes; the mbox has as many mails, with the same parts. HTML begins with its policy, JSON is
such, text is UTF-8 without NULs, vobject reads contacts and calendars, and libical finds nothing
wrong in calendars. Text is compared without white space at its ends and the ends of its lines.
"""

import email
import email.header
import email.policy
import email.utils
import hashlib
import json
import mailbox
import os
import re
import subprocess
import sys
import tempfile
from datetime import timezone

import vobject

DATA, ITEM, OLE, REFERENCE, SIGNATURE = range(5)
POLICY = (
    '<!DOCTYPE html>\n<html>\n<head>\n<meta http-equiv="Content-Security-Policy" content="'
    "default-src 'none'; img-src data:; style-src 'unsafe-inline'\">\n<meta charset=\"utf-8\">\n"
)

# What differs, and why.
KEPT = {
    ("simple-email-with-to-and-cc-single.msg 1", "to again"): "the headers it came with have a name",
    ("simple-sent.msg 1", "subject"): "the headers it came with have another",
    ("simple-sent.msg 1", "subject again"): "the headers it came with have another",
    ("testgetmsgattch.msg 1/", "subject"): "the headers it came with have another",
    ("testgetmsgattch.msg 1/", "subject again"): "the headers it came with have another",
}


def flat(text):
    return " ".join(text.split())


def lines(text):
    return [line.rstrip() for line in text.replace("\ufeff", "").replace("\0", "").strip().splitlines()]


def subject(message):
    return flat(str(email.header.make_header(email.header.decode_header(message["subject"] or ""))))


def text_of(part):
    content = part.get_payload(decode=True) or b""
    charset = part.get_content_charset()
    # Python's names of charsets are narrower than those of mails.
    charset = {"iso-8859-1": "cp1252", "us-ascii": "utf-8", "gb2312": "gb18030",
               "ks_c_5601-1987": "cp949", "windows-874": "cp874"}.get(charset, charset)
    try:
        return content.decode(charset or "utf-8", "replace")
    except LookupError:
        return content.decode("utf-8", "replace")


class Parts:
    """Texts and attachments of a mail that the archive made."""

    def __init__(self, message):
        self.text = self.html = None
        self.hashes = []
        self.items = []
        self.walk(message)

    def walk(self, part):
        kind = part.get_content_type()
        if part.get_content_maintype() == "multipart" and part.is_multipart():
            for inner in part.get_payload():
                self.walk(inner)
        elif part.get_content_disposition() is None:
            if kind == "text/plain":
                self.text = text_of(part)
            elif kind == "text/html":
                self.html = text_of(part)
        elif kind == "message/rfc822":
            self.items.append(part.get_payload(0))
        elif kind != "message/external-body":
            self.hashes.append(hashlib.sha256(part.get_payload(decode=True)).hexdigest())

    def summary(self):
        return (self.text, self.html, sorted(self.hashes), [Parts(i).summary() for i in self.items])


class Check:
    def __init__(self, reader):
        self.reader = reader
        self.failures = 0
        self.items = 0

    def same(self, name, what, left, right):
        if left != right and (name, what) not in KEPT:
            self.failures += 1
            print(f"{name}: {what}: {str(left)[:300]!r} and {str(right)[:300]!r}")

    def compare_python(self, name, item, message):
        """An item with a mail that was made of it; mails within it likewise."""
        parts = Parts(message)
        self.same(name, "subject", flat(item["subject"]), subject(message))
        if "text" in item:
            self.same(name, "text", lines(item["text"]), lines(parts.text or ""))
        if "html" in item:
            self.same(name, "html", bool(item["html"].strip()), bool((parts.html or "").strip()))
        hashes = [a["sha256"] for a in item["attachments"] if "sha256" in a]
        self.same(name, "attachments", sorted(hashes), sorted(parts.hashes))
        inner = [a["item"] for a in item["attachments"] if a.get("item")]
        self.same(name, "items", len(inner), len(parts.items))
        for one, other in zip(inner, parts.items):
            self.compare_python(name + "/", one, other)

    def compare_archive(self, name, item, again):
        """An item with what the archive reads of the mail that was made of it."""
        self.same(name, "subject again", flat(item["subject"]), flat(again["subject"]))
        for what in ("from", "to", "cc"):
            left = [a.lower() for a in item[what] if "@" in a]
            right = [a.lower() for a in again[what] if "@" in a]
            self.same(name, what + " again", left, right)
        if item["sent"]:
            self.same(name, "sent again", item["sent"], again["sent"])
        for what in ("text", "html"):
            if what in item:
                self.same(name, what + " again", lines(item[what]), lines(again.get(what, "")))
        hashes = sorted(a["sha256"] for a in item["attachments"] if "sha256" in a)
        self.same(name, "attachments again", hashes,
                  sorted(a["sha256"] for a in again["attachments"] if "sha256" in a))
        inner = [a["item"] for a in item["attachments"] if a.get("item")]
        others = [a["item"] for a in again["attachments"] if a.get("item")]
        self.same(name, "items again", len(inner), len(others))
        for one, other in zip(inner, others):
            self.compare_archive(name + "/", one, other)

    def check_file(self, program, path):
        with tempfile.TemporaryDirectory() as folder:
            run = subprocess.run([program, path, folder], stdout=subprocess.PIPE)
            name = os.path.basename(path)
            if run.returncode > 1 or run.returncode < 0:
                self.same(name, "status", run.returncode, 0)
            rows = [json.loads(line) for line in run.stdout.splitlines()]
            for row in rows:
                self.check_item(f"{name} {row['place']}", folder, row)
            self.check_calendars(name, folder, rows)
            if rows:
                self.check_mbox(name, folder, len(rows))

    def check_item(self, name, folder, row):
        self.items += 1
        stem = os.path.join(folder, str(row["place"]))
        with open(stem + ".eml", "rb") as file:
            content = file.read()
        self.same(name, "bytes again", row.get("isSameAgain"), True)
        with open(stem + ".html", encoding="utf-8") as file:
            html = file.read()
        self.same(name, "policy", html.startswith(POLICY), True)
        self.same(name, "scripts", re.findall(r"(?i)<script|<iframe|<object|<base", html), [])
        with open(stem + ".json", encoding="utf-8") as file:
            self.same(name, "json", json.load(file)["subject"], row["item"]["subject"])
        with open(stem + ".txt", encoding="utf-8") as file:
            self.same(name, "NULs", "\0" in file.read(), False)
        self.check_cards(name, stem, row)
        if row["lost"] or row["class"].endswith("MultipartSigned"):
            return
        message = email.message_from_bytes(content, policy=email.policy.compat32)
        if not row["isMail"]:
            self.compare_python(name, row["item"], message)
            self.compare_archive(name, row["item"], row["again"])
            date = message["date"]
            if row["item"]["sent"] and date:
                moment = email.utils.parsedate_to_datetime(date)
                if moment.tzinfo is None:
                    moment = moment.replace(tzinfo=timezone.utc)
                self.same(name, "date", row["item"]["sent"],
                          moment.astimezone(timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ"))

    def check_cards(self, name, stem, row):
        """vobject knows vCard 3.0; what is compared is the same there."""
        with open(stem + ".vcf", encoding="utf-8", newline="") as file:
            content = file.read()
        self.same(name, "long lines", [li for li in content.split("\r\n") if len(li.encode()) > 75], [])
        card = vobject.readOne(content)
        self.same(name, "name", flat(card.fn.value), flat(row["item"]["subject"]) or card.fn.value)
        if "text" in row["item"] and row["item"]["text"].strip():
            self.same(name, "note", lines(card.note.value), lines(row["item"]["text"]))
        if any(a["name"].endswith(".ics") for a in row["item"]["attachments"]):
            return
        with open(stem + ".ics", encoding="utf-8", newline="") as file:
            calendar = vobject.readOne(file.read())
        event = calendar.vevent
        if row["item"]["subject"]:
            self.same(name, "summary", flat(event.summary.value), flat(row["item"]["subject"]))
        self.same(name, "uid", event.uid.value != "", True)

    def check_calendars(self, name, folder, rows):
        paths = [os.path.join(folder, f"{row['place']}.ics") for row in rows]
        read = subprocess.run([self.reader, *paths], check=True, stdout=subprocess.PIPE).stdout
        for row, line in zip(rows, read.splitlines()):
            calendar = json.loads(line)
            what = f"{name} {row['place']}"
            self.same(what, "errors of the calendar", calendar["errors"], 0)
            self.same(what, "events", calendar["components"] > 0 and calendar["uid"] != "", True)

    def check_mbox(self, name, folder, count):
        box = mailbox.mbox(os.path.join(folder, "all.mbox"))
        self.same(name, "mails of the mbox", len(box), count)
        for place, message in enumerate(box, 1):
            with open(os.path.join(folder, f"{place}.eml"), "rb") as file:
                content = file.read().replace(b"\r\n", b"\n")
            alone = email.message_from_bytes(content, policy=email.policy.compat32)
            self.same(f"{name} {place}", "in the mbox", Parts(message).hashes, Parts(alone).hashes)


def main():
    program, reader, *folders = sys.argv[1:]
    if os.environ.get("MAIL_CORPUS"):
        folders.append(os.environ["MAIL_CORPUS"])
    check = Check(reader)
    for folder in folders:
        for place, _, names in sorted(os.walk(folder)):
            for name in sorted(names):
                if name.endswith((".eml", ".msg", ".pst", ".tnef", ".mbox")):
                    check.check_file(program, os.path.join(place, name))
    print(f"{check.items} items, {check.failures} differences")
    return 1 if check.failures or not check.items else 0


if __name__ == "__main__":
    sys.exit(main())

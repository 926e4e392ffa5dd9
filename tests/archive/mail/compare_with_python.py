"""Compares what the archive reads of internet mail with what Python's email and mailbox read.

Usage: compare_with_python.py ARCHIVE_DUMP KEPT MAIL_FOLDER

Each mail of the folder, and of the folder "eml" of the one that MAIL_CORPUS names, is read alone; then all of them out of an mbox and a Maildir that Python
writes. Compared are the number of items, subject, date, addresses, and name, length and SHA-256 of
each attachment. KEPT has the differences that there are, each with its reason; others fail, and so
does one that is kept and gone although its mail is there.
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


def dump(program, kind, path):
    """The lines of ArchiveDump that are items."""
    result = subprocess.run([program, kind, path], check=True, stdout=subprocess.PIPE)
    return [json.loads(line) for line in result.stdout.splitlines() if b'"subject"' in line]


def flat(text):
    return " ".join(text.split())


def raw_values(message, name):
    """The values of a header as they came; bytes beyond ASCII are surrogates."""
    return [value for key, value in message.raw_items() if key.lower() == name]


def decoded(value):
    """A header's text: its encoded words decoded, other bytes as UTF-8 or Windows-1252."""
    raw = value.encode("utf-8", "surrogateescape")
    try:
        text = raw.decode("utf-8")
    except UnicodeDecodeError:
        text = raw.decode("cp1252", "replace")
    text = re.sub(r"\r?\n(?=[ \t])", "", text)
    try:
        return flat(str(email.header.make_header(email.header.decode_header(text))))
    except (LookupError, UnicodeError, ValueError):
        return flat(text)


def subject_of(message):
    return decoded("".join(raw_values(message, "subject")[:1]))


def addresses_of(message, name):
    values = [re.sub(r"\r?\n", "", value) for value in raw_values(message, name)]
    return [address for _, address in email.utils.getaddresses(values) if "@" in address]


def date_of(message):
    try:
        moment = email.utils.parsedate_to_datetime(raw_values(message, "date")[0])
    except (TypeError, ValueError, IndexError):
        return None
    if moment.tzinfo is None:
        moment = moment.replace(tzinfo=timezone.utc)
    return moment.astimezone(timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")


def is_text(part, is_first):
    """Whether a leaf is read, rather than saved."""
    if part.get_content_type() not in ("text/plain", "text/html", "text/enriched", "text/richtext"):
        return False
    if part.get_content_disposition() == "attachment":
        return False
    return not part.get_filename() or (is_first and part.get_content_disposition() is None)


def leaves_of(message):
    """The parts of a mail that are no multiparts; mails within it are not gone into."""
    if message.get_content_maintype() == "multipart" and message.is_multipart():
        for part in message.get_payload():
            yield from leaves_of(part)
    else:
        yield message


def attachments_of(message):
    found = []
    for place, part in enumerate(leaves_of(message)):
        if part.get_content_maintype() == "multipart" or is_text(part, place == 0):
            continue
        if part.get_content_type() == "message/external-body":
            continue
        name = decoded(part.get_filename("") or "")
        if part.is_multipart():
            # Python keeps no bytes of a mail within a mail, and would write it anew.
            inner = part.get_payload(0)
            found.append((name, None, subject_of(inner)))
        else:
            content = part.get_payload(decode=True) or b""
            found.append((name, len(content), hashlib.sha256(content).hexdigest()))
    return found


def read_by_python(content):
    message = email.message_from_bytes(content, policy=email.policy.compat32)
    return {
        "subject": subject_of(message),
        "date": date_of(message),
        "from": addresses_of(message, "from")[:1],
        "to": addresses_of(message, "to"),
        "cc": addresses_of(message, "cc"),
        "attachments": attachments_of(message),
    }


def read_by_archive(item):
    attachments = []
    for attachment in item["attachments"]:
        if attachment["kind"] == "reference":
            continue
        name = flat(attachment["name"])
        if attachment["kind"] == "item" and "subject" in attachment["item"]:
            attachments.append((name, None, flat(attachment["item"]["subject"])))
        else:
            attachments.append((name, attachment.get("bytes"), attachment.get("sha256")))

    def addresses(people):
        return [person["address"] for person in people if "@" in person["address"]]

    return {
        "subject": flat(item["subject"]),
        "date": item["sent"]["utc"] if item["sent"] else None,
        "from": addresses([item["from"]]),
        "to": addresses(item["to"]),
        "cc": addresses(item["cc"]),
        "attachments": attachments,
    }


class Comparison:
    def __init__(self, kept):
        self.kept = kept
        self.met = set()
        self.failures = 0

    def differ(self, name, what, archive, python):
        key = (name, what)
        if key in self.kept:
            self.met.add(key)
            return
        self.failures += 1
        print(f"{name}: {what}: the archive reads {archive!r}, Python {python!r}")

    def compare(self, name, item, content):
        archive = read_by_archive(item)
        python = read_by_python(content)
        for what in python:
            if archive[what] != python[what]:
                self.differ(name, what, archive[what], python[what])


def read_kept(path):
    """Lines of "NAME WHAT REASON"; empty ones and those of "#" are passed over."""
    kept = set()
    with open(path, encoding="utf-8") as lines:
        for line in lines:
            if line.strip() and not line.startswith("#"):
                name, what, reason = line.split(maxsplit=2)
                assert reason
                kept.add((name, what))
    return kept


def mails_in(folders):
    for folder in folders:
        for place, _, names in sorted(os.walk(folder)):
            for name in sorted(names):
                if name.endswith(".eml"):
                    yield name, os.path.join(place, name)


def compare_box(comparison, program, kind, path, box, contents):
    """A box of mails that Python wrote: the same mails with the same attachments as alone."""
    items = dump(program, kind, path)
    if len(items) != len(contents):
        comparison.differ(kind, "count", len(items), len(contents))
        return
    if len(box) != len(items):
        comparison.differ(kind, "count-again", len(items), len(box))
    for item, (name, alone) in zip(items, contents):
        archive = read_by_archive(item)
        if archive != alone:
            comparison.differ(f"{kind}/{name}", "mail", archive, alone)


def main():
    program, kept, *folders = sys.argv[1:]
    if os.environ.get("MAIL_CORPUS"):
        folders.append(os.path.join(os.environ["MAIL_CORPUS"], "eml"))
    comparison = Comparison(read_kept(kept))
    alone = []
    with tempfile.TemporaryDirectory() as temporary:
        mbox = mailbox.mbox(os.path.join(temporary, "mails.mbox"))
        maildir = mailbox.Maildir(os.path.join(temporary, "Maildir"))
        for name, path in mails_in(folders):
            with open(path, "rb") as file:
                content = file.read()
            items = dump(program, "mail", path)
            if len(items) != 1:
                comparison.differ(name, "count", len(items), 1)
                continue
            comparison.compare(name, items[0], content)
            alone.append((name, path, content, read_by_archive(items[0])))
        for place, (_, _, content, _) in enumerate(alone):
            mbox.add(content)
            with open(os.path.join(temporary, "Maildir", "cur", f"{place:06}:2,S"), "wb") as file:
                file.write(content)
        mbox.flush()
        expected = [(name, read) for name, _, _, read in alone]
        compare_box(comparison, program, "mbox", os.path.join(temporary, "mails.mbox"), mbox,
                    expected)
        compare_box(comparison, program, "maildir", os.path.join(temporary, "Maildir"), maildir,
                    expected)
    read = {name for name, _, _, _ in alone}
    for name, what in sorted(comparison.kept - comparison.met):
        if name not in read:
            continue
        comparison.failures += 1
        print(f"{name}: {what}: kept as a difference, and is none")
    print(f"{len(alone)} mails, {comparison.failures} differences without a reason")
    return 1 if comparison.failures or not alone else 0


if __name__ == "__main__":
    sys.exit(main())

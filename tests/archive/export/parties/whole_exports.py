"""Reads whole exports with Python's email and mailbox, with the archive's own reader, with vobject
and libical.

Usage: whole_exports.py TARNMAIL_ARCHIVE READ_ICALENDAR FOLDER...

All mail files of the folders, and of the folder that MAIL_CORPUS names, are exported in every form
but PDF.
Each item that `list --recover` names has a row, and whoever has no files has a reason; each file has
the hash of its row. The mail, the mail in the mbox and the attachments of each item have the
subject, addresses, date, texts and hashes of its JSON, also after a second export, of the mails and
of the mboxes.
"""

import collections
import email
import email.policy
import hashlib
import json
import mailbox
import os
import subprocess
import sys
import tempfile

import vobject

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "../../writers/parties"))
sys.path.insert(0, os.path.join(HERE, "../../mail"))
import compare_with_python as python_mail  # noqa: E402
from read_back import KEPT, Parts, flat, lines, subject  # noqa: E402

KEPT_SUBJECTS = {name.split()[0] for name, what in KEPT if what == "subject"}
KEPT_PEOPLE = {name.split()[0] for name, what in KEPT if what == "to again"}


def read(path):
    with open(path, "rb") as file:
        return file.read()


def rows_of(text):
    return [json.loads(line) for line in text.splitlines()]


class Check:
    def __init__(self, program):
        self.program = program
        self.failures = 0

    def same(self, name, what, left, right):
        if left != right:
            self.failures += 1
            print(f"{name}: {what}: {str(left)[:300]!r} and {str(right)[:300]!r}")

    def run(self, *words):
        """What is said; troubles of single items are met in the rows."""
        run = subprocess.run([self.program, *words], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        if run.returncode not in (0, 1):
            self.same(" ".join(words), "exit status", run.returncode, 0)
        return run.stdout


class Exported:
    """An export with its manifest, and the JSON of its items."""

    def __init__(self, check, folder, paths, *options):
        self.folder = folder
        check.run("export", *paths, "-o", folder, *options)
        manifest = rows_of(read(os.path.join(folder, "manifest.jsonl")))
        self.sources = {row["source"]: row for row in manifest if row["type"] == "source"}
        self.items = {(row["source"], row["id"]): row for row in manifest if row["type"] == "item"}
        for row in self.items.values():
            for file in row["files"]:
                content = self.bytes(file)
                check.same(file["path"], "bytes", len(content), file["bytes"])
                check.same(file["path"], "sha256", hashlib.sha256(content).hexdigest(), file["sha256"])

    def bytes(self, file):
        return read(os.path.join(self.folder, file["path"]))

    def of(self, row, role):
        return [file for file in row["files"] if file["role"] == role]

    def json(self, row):
        return json.loads(self.bytes(self.of(row, "json")[0]))


def hashes_of(exported, row):
    """The files beside an item, but for mails within it, which are items of their own."""
    model = exported.json(row)
    kinds = {each["index"]: each["kind"] for each in model["attachments"]}
    return sorted(file["sha256"] for file in exported.of(row, "attachment")
                  if kinds[file["index"]] != "item")


def people(model, what):
    found = model[what] if isinstance(model[what], list) else [model[what]]
    return [each["address"].lower() for each in found if "@" in each["address"]]


def text_of(model, what):
    return lines(model["bodies"].get(what) or "")


def check_listed(check, exported, listed):
    for row in listed:
        name = (row["source"], row["id"])
        if name not in exported.items:
            source = exported.sources.get(row["source"], {})
            check.same(name, "row", bool(source.get("reason") or source.get("troubles")), True)
            continue
        found = exported.items[name]
        for key in ("folder", "class", "subject"):
            check.same(name, key, found[key], row[key])
        if found["status"] != "exported":
            check.same(name, "reason", bool(found["reason"]), True)
        if found["status"] == "failed":
            continue
        check.same(name, "forms", {"html", "text", "eml", "json"} - {f["role"] for f in found["files"]},
                   set())
        model = exported.json(found)
        for key in ("id", "folder", "class", "subject", "to", "cc", "bcc", "sent", "received"):
            check.same(name, key + " of the JSON", model[key], row[key])
        check.same(name, "attachments", len(model["attachments"]), row["attachments"])


class MailCheck:
    """The mail of an item, read by Python, beside the item's JSON."""

    def __init__(self, check, exported):
        self.check = check
        self.exported = exported

    def compare(self, name, row):
        model = self.exported.json(row)
        content = self.exported.bytes(self.exported.of(row, "eml")[0])
        message = email.message_from_bytes(content, policy=email.policy.compat32)
        file = os.path.basename(name[0])
        if "properties" not in model:
            self.compare_mail(file, row, content)
            return
        if model["class"].endswith("MultipartSigned"):
            return
        parts = Parts(message)
        if file not in KEPT_SUBJECTS:
            self.check.same(name, "subject", subject(message), flat(model["subject"]))
        for key in ("to", "cc"):
            if file in KEPT_PEOPLE:
                continue
            read_by_python = [each.lower() for each in python_mail.addresses_of(message, key)]
            self.check.same(name, key, read_by_python, people(model, key))
        if model["sent"]:
            self.check.same(name, "date", python_mail.date_of(message), model["sent"])
        if "text" in model["bodies"]:
            self.check.same(name, "text", lines(parts.text or ""), text_of(model, "text"))
        if (model["bodies"].get("html") or "").strip():
            self.check.same(name, "html", bool((parts.html or "").strip()), True)
        self.check.same(name, "attachments", sorted(parts.hashes), hashes_of(self.exported, row))

    def compare_mail(self, file, row, content):
        """Internet mail: each attachment beside is what Python decodes."""
        kept = KEPT_MAILS.get(file, ())
        python = python_mail.read_by_python(content)
        found = [sum256 for _, length, sum256 in python["attachments"] if length is not None]
        if "attachments" not in kept:
            self.check.same(file, "attachments", sorted(found), hashes_of(self.exported, row))
        for key in ("subject", "date"):
            model = self.exported.json(row)
            expected = flat(model["subject"]) if key == "subject" else model["sent"]
            if key not in kept:
                self.check.same(file, key, python[key], expected)


def kept_mails():
    kept = collections.defaultdict(set)
    for name, what in python_mail.read_kept(os.path.join(HERE, "../../mail/python-differences.txt")):
        kept[name].add(what)
    return kept


KEPT_MAILS = kept_mails()


def check_boxes(check, exported):
    """Every mail of every mbox, at the place and with the length of its row."""
    boxes = collections.defaultdict(list)
    for row in exported.items.values():
        for file in exported.of(row, "mbox"):
            boxes[file["path"]].append((file, row))
    for path, rows in boxes.items():
        content = read(os.path.join(exported.folder, path))
        box = mailbox.mbox(os.path.join(exported.folder, path), create=False)
        check.same(path, "mails", len(box), len(rows))
        at = 0
        for (file, row), message in zip(rows, box):
            check.same(path, "offset", file["offset"], at)
            check.same(path, "From", content[at:at + 5], b"From ")
            at += file["length"]
            check.same(f"{path} {row['id']}", "hashes", Parts(message).hashes,
                       Parts(with_line_feeds(exported, row)).hashes)
        check.same(path, "length", at, len(content))
    return sorted(boxes)


def with_line_feeds(exported, row):
    """The mail of an item as an mbox has it: lines of files that are not encoded end so too."""
    content = exported.bytes(exported.of(row, "eml")[0]).replace(b"\r\n", b"\n")
    return email.message_from_bytes(content, policy=email.policy.compat32)


def same_again(check, name, model, again, hashes, hashes_again):
    file = os.path.basename(name[0])
    if file not in KEPT_SUBJECTS:
        check.same(name, "subject again", flat(again["subject"]), flat(model["subject"]))
    for what in ("from", "to", "cc"):
        if file not in KEPT_PEOPLE:
            check.same(name, what + " again", people(again, what), people(model, what))
    if model["sent"]:
        check.same(name, "sent again", again["sent"], model["sent"])
    if model["class"].endswith("MultipartSigned"):
        return
    for what in ("text", "html"):
        if what in model["bodies"]:
            check.same(name, what + " again", text_of(again, what), text_of(model, what))
    check.same(name, "attachments again", hashes_again, hashes)


def check_again(check, exported, boxes):
    """The export of the mails, and that of the mboxes."""
    mails = {}
    for name, row in exported.items.items():
        for file in exported.of(row, "eml"):
            mails[os.path.join(exported.folder, file["path"])] = (name, row)
    outer = [path for path, (_, row) in mails.items() if "parent" not in row]
    again = Exported(check, exported.folder + "-again", outer, "--to", "json", "--no-catalogue")
    met = 0
    for path in outer:
        name, row = mails[path]
        other = again.items[(path, "1")]
        same_again(check, name, exported.json(row), again.json(other), hashes_of(exported, row),
                   hashes_of(again, other))
        met += 1
    paths = [os.path.join(exported.folder, path) for path in boxes]
    again = Exported(check, exported.folder + "-boxes", paths, "--to", "json", "--no-catalogue")
    for path, full in zip(boxes, paths):
        rows = [row for row in exported.items.values() for file in exported.of(row, "mbox")
                if file["path"] == path]
        others = [row for row in again.items.values() if row["source"] == full and "parent" not in row]
        check.same(path, "items again", len(others), len(rows))
        for row, other in zip(rows, others):
            name = (row["source"], row["id"])
            hashes = hashes_of(exported, row)
            again_hashes = hashes_of(again, other)
            if hashes != again_hashes:
                hashes = sorted(Parts(with_line_feeds(exported, row)).hashes)
            same_again(check, name, exported.json(row), again.json(other), hashes, again_hashes)
    return met


def check_cards(check, exported, reader):
    """Contacts by vobject, appointments and tasks by libical."""
    calendars = {}
    cards = 0
    for name, row in exported.items.items():
        for file in exported.of(row, "vcard"):
            card = vobject.readOne(exported.bytes(file).decode("utf-8"))
            check.same(name, "name of the card", bool(card.fn.value.strip()), True)
            cards += 1
        for file in exported.of(row, "icalendar"):
            calendars[os.path.join(exported.folder, file["path"])] = (name, row)
    read_by_libical = rows_of(subprocess.run([reader, *calendars], check=True,
                                             stdout=subprocess.PIPE).stdout)
    check.same("calendars", "number", len(read_by_libical), len(calendars))
    for (path, (name, row)), calendar in zip(calendars.items(), read_by_libical):
        check.same(name, "errors of the calendar", calendar["errors"], 0)
        check.same(name, "components", calendar["components"] > 0, True)
        check.same(name, "uid", bool(calendar["uid"]), True)
        if "properties" in exported.json(row):
            check.same(name, "summary", flat(calendar["summary"]), flat(row["subject"]))
    return cards, len(calendars)


def main():
    program, reader, *folders = sys.argv[1:]
    if os.environ.get("MAIL_CORPUS"):
        folders.append(os.environ["MAIL_CORPUS"])
    check = Check(program)
    with tempfile.TemporaryDirectory() as temporary:
        # Forms of examples that are no mails are found by their content, and left out.
        exported = Exported(check, os.path.join(temporary, "out"), folders, "--recover", "-j2",
                            "--to", "html,text,eml,mbox,json")
        listed = rows_of(check.run("list", "--recover", "--json", *folders))
        check_listed(check, exported, listed)
        mails = MailCheck(check, exported)
        for name, row in exported.items.items():
            if row["status"] == "exported":
                mails.compare(name, row)
        boxes = check_boxes(check, exported)
        again = check_again(check, exported, boxes)
        cards, calendars = check_cards(check, exported, reader)
        verified = subprocess.run([program, "verify", exported.folder], stderr=subprocess.DEVNULL)
        check.same("verify", "exit status", verified.returncode, 0)
    print(f"{len(exported.items)} items, {again} of them again, {len(boxes)} mboxes, {cards} contacts, "
          f"{calendars} calendars, {check.failures} differences")
    for count in (len(listed), again, len(boxes)):
        check.same("what is tested", "some", count > 0, True)
    return 1 if check.failures else 0


sys.exit(main())

#!/usr/bin/env python3
"""hard_exports.py TARNMAIL_ARCHIVE LIMITED: exports of hostile names and mails, into folders that
cannot be used, of sources that are named oddly. LIMITED is 1 where workers have a limit on memory;
where they have none, sanitizers make them slow, and what is hostile by its size has a tenth of it."""

import base64
import collections
import ctypes
import json
import os
import random
import resource
import stat
import subprocess
import sys
import tempfile
import unicodedata
import unittest

ARCHIVE, LIMITED = sys.argv[1], sys.argv[2] == '1'
TENTHS = 10 if LIMITED else 1
SEARCH = os.path.join(os.path.dirname(ARCHIVE), 'tarnmail-search')  # is beside it

FROM = 'From ann@example.com Wed May  1 10:34:56 2024\n'
DATE = 'Date: Wed, 1 May 2024 10:34:56 +0000\n'
LONG = 'long' * 75

HOSTILE_NAMES = [
    '../../x', '..', '/etc/passwd', 'C:\\Windows\\x', 'CON', 'nul.txt', 'com1.log', LONG, LONG + '.pdf',
    '語' * 150, '😀' * 80, 'e\u0301' * 100, '\u202efdp.exe', 'a\u200bb', '--rf', '-', '.hidden',
    'trailing...', 'trailing   ', 'new\nline', 'tab\tbell\x07', 'a/b', 'CASE', 'case', 'Case',
    'Ame\u0301lie', 'Am\u00e9lie', 'ﬁle', 'file', 'ＣＯＮ', 'con ', 'x [0]', 'x', 'X', '', ' ', '\u00a0',
    'messages.mbox', 'attachments', 'embedded', 'index', 'manifest.jsonl', '.tarn-staging', 'a\x00b',
    '<b>|"?*', '💥\ud83d'.encode('utf-8', 'ignore').decode(), '\u2028', 'a\u0085b', '%2e%2e%2f', '~', '$HOME',
]

DEVICES = {'con', 'prn', 'aux', 'nul', 'conin$', 'conout$', 'clock$',
           *(kind + str(number) for kind in ('com', 'lpt') for number in range(10))}


def encoded(text):
    return '=?utf-8?b?%s?=' % base64.b64encode(text.encode()).decode()


def mail(number, subject, name=None):
    return (f'From: ann@example.com\nTo: bob@example.com\nSubject: {encoded(subject)}\n{DATE}'
            f'Message-ID: <{number}@example.com>\nMIME-Version: 1.0\n'
            'Content-Type: multipart/mixed; boundary=x\n\n--x\nContent-Type: text/plain\n\nText\n'
            '--x\nContent-Type: application/octet-stream\nContent-Disposition: attachment; filename="'
            f'{encoded(subject if name is None else name)}"\n\nbytes {number}\n--x--\n')


def box(*mails):
    return ''.join(FROM + each + '\n' for each in mails)


def drop_rights():
    """Root writes where it likes through these."""
    libc = ctypes.CDLL(None)
    for capability in (1, 2):
        libc.prctl(24, capability, 0, 0, 0)


class HardExport(unittest.TestCase):
    def setUp(self):
        self.temporary = tempfile.TemporaryDirectory()
        self.addCleanup(self.temporary.cleanup)
        self.home = self.temporary.name
        os.mkdir(self.path('in'))

    def path(self, *names):
        return os.path.join(self.home, *names)

    def write(self, name, text):
        path = self.path(name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, 'wb') as file:
            file.write(text if isinstance(text, bytes) else text.encode())
        return path

    def run_archive(self, *words):
        environment = dict(os.environ, LC_ALL='C.UTF-8', TZ='UTC')
        program = SEARCH if words[0] == 'search' else ARCHIVE
        run = subprocess.run([program, *words], cwd=self.home, env=environment, preexec_fn=drop_rights,
                             stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=240)
        return run.returncode, run.stderr.decode()

    def export(self, *words, status=0, out='out'):
        code, said = self.run_archive('export', *words, '-o', out)
        self.assertEqual(code, status, said)
        return said

    def manifest(self, out='out'):
        with open(self.path(out, 'manifest.jsonl'), encoding='utf-8') as file:
            return [json.loads(line) for line in file]

    def items(self, out='out'):
        return [row for row in self.manifest(out) if row['type'] == 'item']

    def verify(self, out='out'):
        code, said = self.run_archive('verify', out)
        self.assertEqual(code, 0, said)


class Names(HardExport):
    def check_name(self, name):
        text = name.decode()
        self.assertLessEqual(len(name), 120, text)
        self.assertFalse(text[0] in '-. ', text)
        self.assertFalse(text[-1] in '. ', text)
        for character in text:
            self.assertNotIn(character, '/\\:*?"<>|')
            # Control characters, and those that turn the writing round.
            self.assertNotIn(unicodedata.category(character), ('Cc', 'Cs', 'Zl', 'Zp'), repr(text))
            self.assertNotIn(character, '\u061c\u200e\u200f\u202a\u202b\u202c\u202d\u202e\u2066\u2067'
                                        '\u2068\u2069\u200b\ufeff', repr(text))
        first = unicodedata.normalize('NFKC', text.split('.')[0]).strip().lower()
        self.assertNotIn(first, DEVICES, text)

    def check_tree(self, out='out'):
        """Of every folder the names are safe, and no system takes two of them for one."""
        count = 0
        root = self.path(out).encode()
        for folder, folders, files in os.walk(root):
            folded = collections.Counter()
            for name in folders + files:
                count += 1
                self.check_name(name)
                folded[unicodedata.normalize('NFD', unicodedata.normalize('NFD', name.decode())
                                             .casefold())] += 1
                self.assertFalse(stat.S_ISLNK(os.lstat(os.path.join(folder, name)).st_mode))
            self.assertEqual([name for name, times in folded.items() if times > 1], [], folder)
        return count

    def test_of_subjects_and_attachments_are_safe(self):
        mails = [mail(number, name) for number, name in enumerate(HOSTILE_NAMES)]
        # All of them in one mail too.
        many = (f'From: ann@example.com\nSubject: Many\n{DATE}MIME-Version: 1.0\n'
                'Content-Type: multipart/mixed; boundary=x\n\n' + ''.join(
                    '--x\nContent-Type: application/octet-stream\nContent-Disposition: attachment; '
                    f'filename="{encoded(name)}"\n\nfile {number}\n'
                    for number, name in enumerate(HOSTILE_NAMES)) + '--x--\n')
        self.write('in/box', box(*mails, many))
        self.export('in', '--to', 'html,text,eml,mbox,json')
        self.verify()
        items = self.items()
        self.assertEqual(len(items), len(HOSTILE_NAMES) + 1)
        self.assertEqual({row['status'] for row in items}, {'exported'})
        for number, row in enumerate(items[:-1]):
            attachment = [file for file in row['files'] if file['role'] == 'attachment'][0]
            with open(self.path('out', attachment['path']), 'rb') as file:
                self.assertEqual(file.read().strip(), b'bytes %d' % number)
        self.assertEqual(len([f for f in items[-1]['files'] if f['role'] == 'attachment']),
                         len(HOSTILE_NAMES))
        self.assertGreater(self.check_tree(), 6 * len(HOSTILE_NAMES))
        self.assertEqual(sorted(os.listdir(self.home)), ['in', 'out'])

    def test_of_sources_and_folders_are_safe(self):
        names = {name.replace('/', '_') for name in HOSTILE_NAMES if '\0' not in name} - {'', '.', '..'}
        names = sorted(name for name in names if len(name.encode()) <= 250)
        for number, name in enumerate(names):
            self.write('in/%d/%s' % (number, name), box(mail(number, 'Mail')))
        # Maildir++: a folder is named by a dot and its path, in modified UTF-7.
        folders = [name for name in names if name.isascii() and name.isprintable() and '.' not in name
                   and '&' not in name and len(name) < 200]
        for part in ('cur', 'new', 'tmp'):
            os.makedirs(self.path('in/Maildir', part))
            for name in folders:
                os.makedirs(self.path('in/Maildir', '.' + name, part))
        for number, name in enumerate(folders):
            self.write(f'in/Maildir/.{name}/cur/1:2,S', mail(1000 + number, 'Mail'))
        self.export('in', '--to', 'text,mbox')
        self.verify()
        self.assertEqual(len(self.items()), len(names) + len(folders))
        self.check_tree()

    def test_differ_by_case_and_form_alone(self):
        self.write('in/box', box(*(mail(number, subject) for number, subject in enumerate(
            ['Plan', 'PLAN', 'plan', 'Pla\u0301n', 'Pl\u00e1n', 'Plan [0]', 'Plan.', 'Plan  ']))))
        self.export('in', '--to', 'text')
        self.assertEqual(len({os.path.dirname(row['files'][-1]['path']) for row in self.items()}), 8)
        self.check_tree()


class Places(HardExport):
    def test_without_rights_to_write_are_refused(self):
        self.write('in/box', box(mail(1, 'Mail')))
        os.mkdir(self.path('closed'), 0o555)
        for out in ('closed', 'closed/out'):
            said = self.export('in', out=out, status=2)
            self.assertEqual(said.count('\n'), 1, said)
            self.assertIn('Permission denied', said)
            self.assertEqual(os.listdir(self.path('closed')), [])

    def test_that_are_no_folders_are_refused(self):
        self.write('in/box', box(mail(1, 'Mail')))
        self.write('file', 'x')
        for out in ('file', 'file/out'):
            said = self.export('in', out=out, status=2)
            self.assertEqual(said.count('\n'), 1, said)
        with open(self.path('file')) as file:
            self.assertEqual(file.read(), 'x')

    def test_that_are_no_exports_are_told(self):
        self.write('other/letter', 'x')
        for words in (('verify', 'other'), ('verify', 'none'), ('search', 'other', 'word'),
                      ('search', 'none', 'word')):
            code, said = self.run_archive(*words)
            self.assertEqual(code, 2, said)
            self.assertEqual(said.count('\n'), 1, said)
            self.assertIn(words[1], said)
        self.write('in/box', box(mail(1, 'Mail')))
        self.assertIn('neither empty nor an export', self.export('in', '--resume', out='other', status=2))
        self.assertEqual(os.listdir(self.path('other')), ['letter'])

    def test_within_a_source_are_left_out(self):
        self.write('in/box', box(mail(1, 'Mail')))
        for out in ('in/out', 'in/other'):
            self.export('in', '--to', 'eml,mbox', out=out)
            self.verify(out)
        self.assertEqual(len(self.items('in/out')), 1)
        # The first export is a source of the second one: its mail, and its mbox.
        self.assertEqual(sorted({row['source'] for row in self.items('in/other')}),
                         ['in/box', 'in/out/box/2024-05-01 Mail/message.eml', 'in/out/box/messages.mbox'])

    def test_of_sources_named_twice_are_one(self):
        self.write('in/box', box(mail(1, 'Mail')))
        os.symlink('in', self.path('link'))
        self.export('in/box', 'in/box', 'in', '--to', 'text')
        self.assertEqual(len(self.items()), 1)

    def test_of_sources_with_the_same_name_are_two(self):
        for folder in ('a', 'b', 'A'):
            self.write(f'in/{folder}/box.mbox', box(mail(1, folder)))
        self.write('in/c/BOX.mbox', box(mail(1, 'c')))
        self.write('in/manifest.jsonl', box(mail(1, 'manifest')))
        self.write('in/Index', box(mail(1, 'index')))
        self.export('in', '--to', 'text')
        self.assertEqual(len({row['files'][0]['path'].split('/')[0].lower() for row in self.items()}), 6)
        self.verify()


class Forms(HardExport):
    def test_add_up(self):
        self.write('in/box', box(mail(1, 'Mail')))
        self.export('in', '--to', 'eml', '--to', 'text,eml', '--to=json')
        roles = {'eml', 'text', 'json'}
        written = {file['role'] for row in self.items() for file in row['files']}
        self.assertEqual(written - {'attachment'}, roles)
        code, said = self.run_archive('plan', 'in', '-o', 'plan', '--to', 'eml', '--to', 'json,text')
        self.assertEqual(code, 0, said)
        with open(self.path('plan'), encoding='utf-8') as file:
            forms = json.loads(file.readlines()[1])['options']['to']
        self.assertEqual(set(forms), roles)

    def test_that_are_none_are_told(self):
        self.write('in/box', box(mail(1, 'Mail')))
        said = self.export('in', '--to', 'eml', '--to', 'tune', status=2)
        self.assertIn('none of html, text, eml, mbox, json, pdf', said)
        for command in ('export', 'plan'):
            code, said = self.run_archive(command, 'in', '-o', 'out', '--one-pdf', '--to', 'eml')
            self.assertEqual(code, 2, said)
            self.assertIn('pdf is not among the forms of --to', said)


class Searching(HardExport):
    def test_a_damaged_catalogue_is_told(self):
        self.write('in/box', box(*(mail(number, 'Word %d' % number) for number in range(40))))
        self.export('in', '--to', 'text')
        path = self.path('out/catalogue.sqlite')
        with open(path, 'rb') as file:
            whole = file.read()
        self.assertEqual(self.run_archive('search', 'out', 'word'), (0, ''))
        for content in (b'', whole[:5000], b'x' * 5000):
            with open(path, 'wb') as file:
                file.write(content)
            code, said = self.run_archive('search', 'out', 'word')
            self.assertIn(code, (1, 2), said)
            self.assertEqual(said.count('\n'), 1, said)
        # Damage that SQLite need not meet.
        places = random.Random(16)
        told = 0
        for _ in range(30):
            content = bytearray(whole)
            for _ in range(40):
                content[places.randrange(100, len(content))] ^= places.randrange(1, 256)
            with open(path, 'wb') as file:
                file.write(content)
            code, said = self.run_archive('search', 'out', 'word')
            self.assertIn(code, (0, 1, 2), said)
            self.assertNotIn('internal error', said)
            told += code != 0
        self.assertGreater(told, 0)
        os.remove(path)
        code, said = self.run_archive('search', 'out', 'word')
        self.assertEqual((code, said), (2, 'tarnmail: out: there is no catalogue.sqlite\n'))


class Hostile(HardExport):
    """Each costs one row, and what is beside it nothing."""

    HEAD = 'From: a@example.com\nSubject: %s\n' + DATE + 'MIME-Version: 1.0\n'

    def assert_bounded(self, *words, megabytes=320):
        """Of the largest process that has ended; with sanitizers there is no such bound."""
        self.export(*words, status=0)
        peak = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss // 1024
        if LIMITED:
            self.assertLess(peak, megabytes)
        self.verify()

    def beside(self, text):
        self.write('in/a.eml', text)
        self.write('in/b.eml', mail(1, 'Beside'))

    def check_one_row(self, reason=None, status='partial'):
        rows = self.items()
        self.assertEqual([row['source'] for row in rows], ['in/a.eml', 'in/b.eml'])
        self.assertEqual(rows[1]['status'], 'exported')
        if reason:
            self.assertEqual(rows[0]['status'], status)
            self.assertIn(reason, rows[0]['reason'])

    def test_parts_within_parts(self):
        self.beside(self.HEAD % 'Parts' + ''.join(
            f'Content-Type: multipart/mixed; boundary=b{n}\n\n--b{n}\n'
            for n in range(10000 * TENTHS)) + '\nend\n')
        self.assert_bounded('in', '--to', 'html,text,eml,json')
        self.check_one_row('parts within parts')

    def test_mails_within_mails(self):
        self.write('in/a.eml', self.HEAD % 'Mails' +
                   'Content-Type: message/rfc822\n\n' * (10000 * TENTHS) + '\nend\n')
        self.export('in', '--to', 'text,eml', status=1)
        rows = self.items()
        self.assertLess(len(rows), 50)
        self.assertEqual(rows[-1]['status'] == 'failed' or rows[0]['status'] == 'partial', True)
        self.assertTrue(all(row['status'] == 'exported' or row['reason'] for row in rows))

    def test_attachments_without_end(self):
        self.beside(self.HEAD % 'Attachments' + 'Content-Type: multipart/mixed; boundary=x\n\n' +
                    '--x\nContent-Disposition: attachment\n\na\n' * (100000 * TENTHS) + '--x--\n')
        self.assert_bounded('in', '--to', 'html,text,json')
        self.check_one_row('more than 10000 parts')
        # What is not read is in the mail, which is exported as it is.
        self.assertLessEqual(len(self.items()[0]['files']), 10003)

    def test_open_tags(self):
        self.beside(self.HEAD % 'Tags' + 'Content-Type: text/html\n\n' +
                    '<b><table><tr><td><div>' * (45000 * TENTHS) + 'end\n')
        self.assert_bounded('in', '--to', 'html,text,json')
        self.check_one_row()

    def test_groups_of_rich_text_without_end(self):
        self.beside(self.HEAD % 'Groups' + 'Content-Type: application/rtf\n\n{\\rtf1 ' +
                    '{\\b x' * (200000 * TENTHS))
        self.assert_bounded('in', '--to', 'html,text,json')
        self.check_one_row()

    def test_many_empty_mails(self):
        count = 2000 * TENTHS
        self.write('in/box', (FROM + '\n') * count)
        self.assert_bounded('in', '--to', 'mbox')
        rows = self.items()
        self.assertEqual(len(rows), count)
        self.assertEqual({row['status'] for row in rows}, {'exported'})

    def test_headers_without_end(self):
        self.beside('Subject: ' + 'x' * (2000000 * TENTHS))
        self.export('in', '--to', 'text', status=0)
        self.assertTrue(any(row['source'] == 'in/b.eml' and row['status'] == 'exported'
                            for row in self.items()))

    def test_more_than_the_memory_of_a_worker(self):
        """One mail of a box, and the one of another source."""
        large = (self.HEAD % 'Large' + 'Content-Type: text/html\n\n' + '<div>' * (600000 * TENTHS))
        self.write('in/box', box(mail(1, 'First'), large, mail(2, 'Last')))
        self.write('in/other.eml', mail(3, 'Other'))
        self.export('in', '--to', 'html,text', '--memory', '128', status=1 if LIMITED else 0)
        rows = self.items()
        self.assertEqual([row['subject'] for row in rows if row['status'] == 'exported' and
                          row['subject'] != 'Large'], ['First', 'Last', 'Other'])
        if LIMITED:
            self.assertEqual(rows[1]['status'], 'failed')
            self.assertIn('the process that read it ran out of memory', rows[1]['reason'])
        self.verify()


if __name__ == '__main__':
    unittest.main(argv=sys.argv[:1])

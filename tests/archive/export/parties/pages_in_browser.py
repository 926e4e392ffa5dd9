#!/usr/bin/env python3
"""pages_in_browser.py TARNMAIL_ARCHIVE BROWSER EXAMPLES: an export of mails that try to get out of
its pages, in a browser: index.html and the page of every item; pages of the folder that MAIL_CORPUS
names too."""

import json
import os
import socket
import subprocess
import sys
import tempfile
import unittest
import urllib.parse

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), '../../catalogue'))
from browser import Browser  # noqa: E402

ARCHIVE, PROGRAM, EXAMPLES = sys.argv[1:4]

PICTURE = ('iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJRU5ErkJg'
           'gg==')

# What would run a script or fetch something if it were taken for more than text.
BREAKING = [
    '</script><img src=x onerror=document.title="RUN">',
    '<script>document.title="RUN"</script>',
    "';document.title='RUN';//",
    '"};document.title="RUN";//',
    '<!--<script>document.title="RUN"',
    '\u2028document.title="RUN"\u2029',
    '&lt;img src=http://127.0.0.1:PORT/a&gt;',
    '</title></head><body onload=document.title="RUN">',
    ']]></textarea></style><svg onload=document.title="RUN">',
]

# Of each the page must show the text before it and nothing else happens.
BODIES = [
    '<script>document.title="RUN"; fetch("http://127.0.0.1:PORT/fetch")</script>',
    '<img src="http://127.0.0.1:PORT/img"><img src=//127.0.0.1:PORT/img2 srcset="http://127.0.0.1:PORT/s 2x">',
    '<link rel=stylesheet href="http://127.0.0.1:PORT/css"><link rel=prefetch href="http://127.0.0.1:PORT/p">'
    '<link rel=dns-prefetch href="//dns.example">',
    '<style>@import "http://127.0.0.1:PORT/import"; body{background:url(http://127.0.0.1:PORT/bg)}'
    '@font-face{font-family:x;src:url(http://127.0.0.1:PORT/font)} p{font-family:x}</style><p>x',
    '<p style="background:u\\72l(http://127.0.0.1:PORT/esc)">x<table background="http://127.0.0.1:PORT/t">',
    '<meta http-equiv=refresh content="0;url=http://127.0.0.1:PORT/refresh">'
    '<base href="http://127.0.0.1:PORT/"><img src=rel>',
    '<iframe src="http://127.0.0.1:PORT/frame"></iframe><iframe srcdoc="<script>top.document.title=1</script>">'
    '</iframe><object data="http://127.0.0.1:PORT/o"></object><embed src="http://127.0.0.1:PORT/e">',
    '<svg><image href="http://127.0.0.1:PORT/svg"/><script>document.title="RUN"</script>'
    '<use href="http://127.0.0.1:PORT/use#x"/></svg><math><mglyph src="http://127.0.0.1:PORT/m"></math>',
    '<video poster="http://127.0.0.1:PORT/v" src="http://127.0.0.1:PORT/v2" autoplay></video>'
    '<audio src="http://127.0.0.1:PORT/a" autoplay></audio><input type=image src="http://127.0.0.1:PORT/i">',
    '<form action="http://127.0.0.1:PORT/form"><button autofocus onfocus=document.title="RUN">b</button></form>'
    '<details open ontoggle=document.title="RUN">d</details><a href="javascript:document.title=1" id=link>l</a>',
    '<noscript><p title="</noscript><img src=x onerror=document.title=1>">x</noscript>'
    '<math><mtext><table><mglyph><style><!--</style><img title="--&gt;&lt;img src=1 onerror=alert(1)&gt;">',
    '<img src="cid:picture@x" id=drawn><p>picture',
    # A picture below the text, and the only thing in its box.
    '<div style="position:relative"><div style="position:absolute;z-index:-1;left:30px;top:9px">'
    '<img src="cid:picture@x" width=40 height=40 style="position:absolute;left:5px"></div></div>'
    '<p style="height:50px">',
]


def encoded(text):
    import base64
    return '=?utf-8?b?%s?=' % base64.b64encode(text.encode()).decode()


def mail(number, breaking, body):
    name = encoded(breaking)
    return (f'From ann@example.com Wed May  1 10:34:56 2024\n'
            f'From: {name} <ann@example.com>\nTo: {name} <bob@example.com>\n'
            f'Subject: {encoded("Mail n%dn " % number + breaking)}\n'
            f'Date: Wed, {number % 28 + 1} May 2024 10:34:56 +0000\nMessage-ID: <{number}@example.com>\n'
            'MIME-Version: 1.0\nContent-Type: multipart/related; boundary=x\n\n'
            f'--x\nContent-Type: text/html; charset=utf-8\n\n<h1>Mail {number}</h1>{body}\n'
            f'--x\nContent-Type: text/plain\nContent-Disposition: attachment; filename="{name}"\n\nNotes\n'
            '--x\nContent-Type: image/png\nContent-ID: <picture@x>\nContent-Transfer-Encoding: base64\n\n'
            f'{PICTURE}\n--x--\n\n')


class PagesInBrowser(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.temporary = tempfile.TemporaryDirectory()
        cls.server = socket.create_server(('127.0.0.1', 0))
        cls.server.settimeout(0.5)
        port = str(cls.server.getsockname()[1])
        source = os.path.join(cls.temporary.name, 'in')
        os.mkdir(source)
        cls.count = max(len(BREAKING), len(BODIES))
        text = ''.join(mail(number, BREAKING[number % len(BREAKING)], BODIES[number % len(BODIES)])
                       for number in range(cls.count)).replace('PORT', port)
        # The name of the source is the name of a folder.
        with open(os.path.join(source, "<img src=x onerror=document.title='RUN'>&lt;'.mbox"), 'w') as box:
            box.write(text)
        cls.out = os.path.join(cls.temporary.name, 'out')
        paths = [source, EXAMPLES]
        if os.environ.get('MAIL_CORPUS'):
            paths.append(os.environ['MAIL_CORPUS'])
        run = subprocess.run([ARCHIVE, 'export', *paths, '-o', cls.out, '-j2'], stderr=subprocess.PIPE)
        assert run.returncode == 0, run.stderr.decode()
        with open(cls.out + '/manifest.jsonl', encoding='utf-8') as manifest:
            cls.rows = [row for row in map(json.loads, manifest) if row['type'] == 'item']

    @classmethod
    def tearDownClass(cls):
        cls.server.close()
        cls.temporary.cleanup()

    def url(self, path):
        return 'file://' + urllib.parse.quote(os.path.join(self.out, path))

    def opened(self):
        browser = Browser(PROGRAM)
        self.addCleanup(browser.__exit__)
        return browser

    def assert_nothing_left(self, browser):
        asked = [each['params']['request']['url'] for each in browser.events
                 if each.get('method') == 'Network.requestWillBeSent']
        self.assertTrue(asked)
        # Of styles, what the rules of the page stop is told too, and never sent.
        self.assertLessEqual({urllib.parse.urlparse(url).path for url in asked
                              if not url.startswith(('file:', 'data:'))}, {'/bg', '/esc'})
        with self.assertRaises(TimeoutError):
            self.server.accept()

    def test_pages_run_nothing_and_ask_nobody(self):
        pages = [(row, file['path']) for row in self.rows for file in row['files']
                 if file['role'] == 'html']
        mine = [page for page in pages if 'in/<img' in page[0]['source']]
        self.assertEqual(len(mine), self.count)
        others = [page for page in pages if page not in mine]
        browser = self.opened()
        for row, path in mine + others[::max(1, len(others) // 40)]:
            browser.open(self.url(path))
            browser.wait(f'location.href === {json.dumps(self.url(path))} && '
                         'document.readyState === "complete"')
            title = browser.value('document.title')
            self.assertNotIn(title, ('RUN', '1'), path)
            self.assertEqual(browser.value('document.scripts.length'), 0, path)
            self.assertEqual(browser.value(
                'document.querySelectorAll("iframe, object, embed, form, base, link").length'), 0, path)
            if row in [each for each, _ in mine]:
                shown = browser.value('document.body.innerText')
                self.assertIn('Mail', shown)
                wanted = BREAKING[int(row['subject'].split()[1].strip('n')) % len(BREAKING)]
                if 'PORT' not in wanted and '\u2028' not in wanted:
                    self.assertIn(wanted, shown, path)
        # Pictures that cannot be had leave a word.
        last = [path for row, path in mine if row['subject'].startswith('Mail n11n ')][0]
        browser.open(self.url(last))
        browser.wait('document.images.length === 1 && document.images[0].naturalWidth === 1')
        self.assert_nothing_left(browser)

    def test_layers_of_a_mail_show(self):
        [path] = [file['path'] for row in self.rows if row['subject'].startswith('Mail n12n ')
                  for file in row['files'] if file['role'] == 'html']
        browser = self.opened()
        browser.open(self.url(path))
        browser.wait('document.readyState === "complete" && document.images.length === 1')
        box = browser.value('document.images[0].getBoundingClientRect().toJSON()')
        self.assertEqual((box['width'], box['height']), (40, 40))
        # Below the text, and above what lies below the mail as a whole.
        self.assertEqual(browser.value(f'Array.from(document.elementsFromPoint({box["x"] + 20}, {box["y"] + 20}), '
                                       '(one) => one.localName)'), ['p', 'img', 'tarn-body', 'main', 'body', 'html'])

    def test_index_shows_what_would_break_it(self):
        browser = self.opened()
        browser.open(self.url('index.html'))
        browser.wait(f'typeof mail === "object" && mail.rows.length === {len(self.rows)}')
        self.assertNotEqual(browser.value('document.title'), 'RUN')
        browser.value("document.getElementById('list').focus()")
        for number in range(self.count):
            browser.value("document.getElementById('filter').value = 'n%dn';"
                          "document.getElementById('filter').dispatchEvent(new Event('input'))" % number)
            browser.wait("document.querySelectorAll('.row').length === 1")
            subject = browser.value("document.querySelector('.row .subject').textContent")
            wanted = [row['subject'] for row in self.rows if row['subject'].startswith(f'Mail n{number}n ')][0]
            # A mark of the attachments is before it.
            self.assertTrue(' '.join(subject.split()).endswith(' '.join(wanted.split())), subject)
            browser.value("document.querySelector('.row').click()")
            browser.wait("document.getElementById('subject').textContent.includes('Mail n%dn ')" % number)
            self.assertEqual(browser.value("document.querySelectorAll('#preview img').length"), 0)
            link = browser.value("document.querySelector('#attachments a').href")
            self.assertTrue(link.startswith('file://' + urllib.parse.quote(self.out)), link)
            self.assertTrue(os.path.exists(urllib.parse.unquote(link[len('file://'):])), link)
        self.assertNotEqual(browser.value('document.title'), 'RUN')
        self.assert_nothing_left(browser)


if __name__ == '__main__':
    unittest.main(argv=sys.argv[:1])

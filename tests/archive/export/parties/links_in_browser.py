#!/usr/bin/env python3
"""links_in_browser.py TARNMAIL_ARCHIVE BROWSER: links of exported mails that lead elsewhere, clicked
in the page of the mail and in the preview of index.html: each opens a tab of its own, and whoever it
leads to does not learn from where."""

import http.server
import os
import queue
import subprocess
import sys
import tempfile
import threading
import time
import unittest
import urllib.parse

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), '../../catalogue'))
from browser import Browser  # noqa: E402

ARCHIVE, PROGRAM = sys.argv[1:3]

HEAD = 'From: ann@example.com\nSubject: Links in NAME\nDate: Wed, 1 May 2024 10:34:56 +0000\nMIME-Version: 1.0\n'
MAILS = {
    'html': 'Content-Type: text/html\n\n<p><a href="http://127.0.0.1:PORT/html" target=_top>here</a></p>\n',
    'text': 'Content-Type: text/plain\n\nhttp://127.0.0.1:PORT/text\n',
}


class Answers(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        if self.path != '/favicon.ico':
            self.server.asked.put((self.path, self.headers.get('Referer')))
        self.send_response(200)
        self.send_header('Content-Type', 'text/html')
        self.end_headers()
        self.wfile.write(b'<p>there</p>')

    def log_message(self, *_):
        pass


class LinksInBrowser(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.server = http.server.ThreadingHTTPServer(('127.0.0.1', 0), Answers)
        self.server.asked = queue.Queue()
        threading.Thread(target=self.server.serve_forever, daemon=True).start()
        self.addCleanup(self.server.server_close)
        self.addCleanup(self.server.shutdown)
        self.out = folder.name + '/out'
        for name, mail in MAILS.items():
            with open(f'{folder.name}/{name}.eml', 'w') as file:
                file.write(HEAD.replace('NAME', name) + mail.replace('PORT', str(self.server.server_port)))
        subprocess.run([ARCHIVE, 'export', *(f'{folder.name}/{name}.eml' for name in MAILS), '-o', self.out],
                       check=True, stderr=subprocess.DEVNULL)

    def opened(self, path, name):
        browser = Browser(PROGRAM)
        self.addCleanup(browser.__exit__)
        browser.open('file://' + urllib.parse.quote(f'{self.out}/{path}'))
        browser.wait('document.readyState === "complete"' if name is None else
                     f'document.querySelectorAll(".row").length === {len(MAILS)}')
        return browser

    def pages(self, browser):
        return {each['url'] for each in browser.call('Target.getTargets')['targetInfos']
                if each['type'] == 'page' and not each['url'].startswith('chrome')}

    def assert_opens(self, browser, box, name):
        """A click there: the request that the server gets, and the tabs that are there then."""
        before = self.pages(browser)
        x, y = box['x'] + 4, box['y'] + box['height'] / 2
        for _ in range(4):
            # A frame of another process takes a click only where the mouse is known to be, and when it
            # has been painted, which nothing tells.
            browser.call('Input.dispatchMouseEvent', type='mouseMoved', x=x, y=y)
            for kind in ('mousePressed', 'mouseReleased'):
                browser.call('Input.dispatchMouseEvent', type=kind, x=x, y=y, button='left', clickCount=1)
            try:
                asked = self.server.asked.get(timeout=15)
                break
            except queue.Empty:
                asked = None
        self.assertEqual(asked, ('/' + name, None))
        for _ in range(100):
            new = self.pages(browser) - before
            if any(url.endswith('/' + name) for url in new):
                break
            time.sleep(0.05)
        self.assertEqual(len(new), 1, new)
        # The page itself is where it was.
        self.assertLessEqual(before, self.pages(browser))

    def test_in_the_page_of_the_mail(self):
        for name in MAILS:
            [item] = os.listdir(f'{self.out}/{name}.eml')
            browser = self.opened(f'{name}.eml/{item}/message.html', None)
            self.assert_opens(browser, browser.value(
                'document.querySelector("main a").getBoundingClientRect().toJSON()'), name)

    def test_in_the_preview(self):
        for name in MAILS:
            browser = self.opened('index.html', name)
            browser.value("Array.from(document.querySelectorAll('.row')).find("
                          f"(row) => row.textContent.includes('in {name}')).click()")
            for _ in range(400):
                if browser.frames:
                    break
                browser.value('new Promise((done) => setTimeout(done, 20))')
            frame = browser.frames[-1]
            browser.wait('document.readyState === "complete" && document.querySelector("main a") !== null',
                         session=frame)
            place = browser.value('document.getElementById("frame").getBoundingClientRect().toJSON()')
            box = browser.value('document.querySelector("main a").getBoundingClientRect().toJSON()', frame)
            box['x'] += place['x']
            box['y'] += place['y']
            self.assert_opens(browser, box, name)


if __name__ == '__main__':
    unittest.main(argv=sys.argv[:1])

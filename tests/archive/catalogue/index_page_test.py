#!/usr/bin/env python3
"""index_page_test.py MAKER BROWSER: the page of an export in a browser, as people use it."""

import json
import os
import socket
import subprocess
import sys
import tempfile
import unittest

from browser import Browser

MAKER, PROGRAM = sys.argv[1:3]


def shown(browser):
    """Number and subject of the rows that are drawn, from the top."""
    return browser.value(
        "Array.from(document.querySelectorAll('.row')).sort((a, b) => a.offsetTop - b.offsetTop)"
        ".map((row) => row.querySelector('.subject').textContent)")


class IndexPageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        # Whom the mails ask for a picture.
        cls.server = socket.create_server(('127.0.0.1', 0))
        cls.server.settimeout(0.5)
        subprocess.run([MAKER, cls.folder.name, '20', str(cls.server.getsockname()[1])], check=True)
        cls.url = 'file://' + cls.folder.name + '/index.html'

    @classmethod
    def tearDownClass(cls):
        cls.server.close()
        cls.folder.cleanup()

    def opened(self, **options):
        browser = Browser(PROGRAM, **options)
        self.addCleanup(browser.__exit__)
        browser.open(self.url)
        browser.wait("document.querySelectorAll('.row').length === 20")
        return browser

    def test_lists_and_filters(self):
        browser = self.opened()
        rows = shown(browser)
        # The latest first; markup of a mail is text.
        self.assertIn('<img src=x onerror=alert(1)> 19', rows[0])
        self.assertEqual(browser.value("document.getElementById('count').textContent"),
                         '20 messages')
        browser.key('/')
        browser.type('ZOE')
        browser.wait("document.querySelectorAll('.row').length === 4")
        browser.key('Escape', 27)
        browser.wait("document.querySelectorAll('.row').length === 20")
        browser.type('会議 12')
        browser.wait("document.querySelectorAll('.row').length === 1")
        self.assertIn('会議のお知らせ 12', shown(browser)[0])

    def test_sorts(self):
        browser = self.opened()
        browser.value("document.querySelector('[data-column=subject]').click()")
        self.assertIn('<img', shown(browser)[0])
        browser.value("document.querySelector('[data-column=size]').click()")
        self.assertIn(' 19', shown(browser)[0])
        browser.value("document.querySelector('[data-column=size]').click()")
        self.assertIn(' 0', shown(browser)[0])

    def test_shows_folders(self):
        browser = self.opened()
        names = browser.value(
            "Array.from(document.querySelectorAll('.folder span')).map((each) => each.textContent)")
        self.assertEqual(names[:2], ['All messages', 'private.mbox'])
        self.assertIn('Project "x" \\ \'y\'', names)
        browser.value("document.querySelectorAll('.folder')[1].click()")
        self.assertEqual(browser.value("document.querySelectorAll('.row').length"), 7)
        browser.key('ArrowDown', 40)
        browser.key('ArrowDown', 40)
        browser.key('Enter', 13)
        self.assertEqual(browser.value(
            "document.querySelector('[aria-selected=true] span').textContent"), 'Sent')

    def test_opens_messages_by_keys_and_lets_nothing_out(self):
        browser = self.opened()
        browser.value("window.said = []; addEventListener('message', (e) => said.push(e.data))")
        browser.value("document.getElementById('list').focus()")
        browser.key('ArrowDown', 40)
        browser.key('Enter', 13)
        self.assertIn(' 19', browser.value("document.getElementById('subject').textContent"))
        self.assertEqual(browser.value("document.getElementById('reason').textContent"),
                         'Not whole: an attachment is damaged')
        browser.value("document.getElementById('list').focus()")
        browser.key('Home', 36)
        browser.key('End', 35)
        browser.key('ArrowUp', 38)
        browser.wait("document.getElementById('subject').textContent.endsWith(' 1')")
        self.assertTrue(browser.value("document.querySelector('#attachments a').href").endswith(
            '/box/Inbox/1%20a%23b%25c/attachments/plan%201.pdf'))
        self.assert_frame(browser)
        self.assertEqual(browser.value('said'), [])
        browser.value("document.getElementById('list').focus()")
        browser.key('Escape', 27)
        self.assertTrue(browser.value("document.getElementById('preview').hidden"))

    def frame_of(self, browser):
        """The message in its frame, once it is all there."""
        frame = browser.frame(browser.value("document.getElementById('frame').src"))
        return lambda expression: browser.value(expression, frame)

    def assert_frame(self, browser):
        """The message is there with its picture, and its script has not run."""
        name = browser.value("document.getElementById('frame').src")
        self.assertTrue(name.endswith('/box/Inbox/1%20a%23b%25c/message.html'), name)
        inside = self.frame_of(browser)
        self.assertEqual(inside("document.querySelector('h1').textContent"), 'Message 1')
        self.assertEqual(inside("document.getElementById('drawn').naturalWidth"), 1)
        self.assertEqual(inside('document.title'), 'mail')

    def test_asks_no_server(self):
        browser = self.opened()
        browser.value("document.querySelector('.row').click()")
        self.frame_of(browser)
        asked = [each['params']['request']['url'] for each in browser.events
                 if each.get('method') == 'Network.requestWillBeSent']
        self.assertTrue(any(url.endswith('message.html') for url in asked), asked)
        # What the rules of the mail stop is told too, and never sent.
        self.assertEqual([url for url in asked if not url.startswith(('file:', 'data:'))],
                         ['http://127.0.0.1:%d/beacon.png' % self.server.getsockname()[1]])
        with self.assertRaises(TimeoutError):
            self.server.accept()
        # No rule of the page is broken by the page itself.
        wrong = [each for each in browser.events if each.get('method') == 'Log.entryAdded'
                 and 'index/' in json.dumps(each)]
        self.assertEqual(wrong, [])

    def test_is_light_and_dark(self):
        colours = [self.opened(dark=dark).value('getComputedStyle(document.body).backgroundColor')
                   for dark in (False, True)]
        self.assertEqual(colours, ['rgb(243, 244, 246)', 'rgb(16, 18, 20)'])

    def test_fits_a_phone(self):
        browser = self.opened(width=390, height=800)
        self.assertEqual(browser.value('document.documentElement.scrollWidth'), 390)
        browser.value("document.querySelector('.row').click()")
        box = browser.value("(({width, height}) => [width, height > 300])"
                            "(document.getElementById('preview').getBoundingClientRect())")
        self.assertEqual(box, [390, True])
        browser.value("document.getElementById('back').click()")
        self.assertTrue(browser.value("document.getElementById('preview').hidden"))


class LargeIndexPageTest(unittest.TestCase):
    def test_draws_what_is_seen_of_a_hundred_thousand(self):
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run([MAKER, folder, '100000', '9'], check=True)
            self.assertEqual(len(os.listdir(folder + '/index')), 50 + 3)
            with Browser(PROGRAM) as browser:
                browser.open('file://' + folder + '/index.html')
                browser.wait('typeof mail === "object" && mail.rows.length === 100000 && mail.shown.length === 100000', 60)
                self.assertIn(' 99999', shown(browser)[0])
                browser.value("document.getElementById('list').scrollTop = 1e9")
                browser.wait("Array.from(document.querySelectorAll('.row')).some("
                             "(row) => row.textContent.includes('Budget for May 0'))")
                self.assertLess(browser.value("document.querySelectorAll('.row').length"), 80)
                browser.value("document.getElementById('filter').value = 'invoice 4243';"
                              "document.getElementById('filter').dispatchEvent(new Event('input'))")
                self.assertEqual(
                    [each.split()[-1] for each in shown(browser)],
                    ['94243', '84243', '74243', '64243', '54243', '44243', '42438', '42433',
                     '34243', '24243', '14243', '4243'])

    def test_draws_few_of_very_many_sources_and_folders(self):
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run([MAKER, folder, '26000', '9', 'single'], check=True)
            with Browser(PROGRAM) as browser:
                browser.open('file://' + folder + '/index.html')
                browser.wait('typeof mail === "object" && mail.rows.length === 26000', 60)
                self.assertLess(browser.value("document.querySelectorAll('*').length"), 2000)
                lines = browser.value(
                    "Array.from(document.querySelectorAll('.folder')).map((each) => each.textContent)")
                self.assertEqual(len(lines), 1 + 1 + 10)
                self.assertIn('store.pst', lines[1])
                self.assertEqual(browser.value(
                    "document.querySelectorAll('.folder span')[1].title"), '/mail/store.pst')
                browser.value("document.querySelectorAll('.folder')[2].click()")
                self.assertEqual(browser.value("mail.shown.length"), 2000)
                for _ in range(2):
                    browser.value("Array.from(document.querySelectorAll('.folder b')).filter("
                                  "(each) => each.textContent).pop().click()")
                self.assertEqual(browser.value("document.querySelectorAll('.folder').length"),
                                 12 + 1 + 3000)
                browser.value("Array.from(document.querySelectorAll('.folder')).find("
                              "(each) => each.textContent.includes('Folder 17')).click()")
                self.assertEqual(browser.value("mail.shown.length"), 2)


if __name__ == '__main__':
    unittest.main(argv=sys.argv[:1])

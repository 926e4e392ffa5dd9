#!/usr/bin/env python3
"""isolation_test.py BUILD BROWSER CELL: what a mail that wants more than to be shown gets. BUILD is the folder of
the programs. CELL is a command and what the mail reaches for, as Pages.Network: each is one test.

             Network  Files  Memory  Terminal
    Pages
    Show
    Export
    Page                                       index.html of an export, in a browser
    Watchers                                   that those who watch do see it
"""

import functools
import json
import os
import re
import subprocess
import sys
import tempfile
import unittest
import urllib.parse

import hostile_mails as hostile
import watching

BUILD = sys.argv[1]
TARNMAIL, MAKE_MSG = BUILD + '/tarnmail', BUILD + '/tests/MakeHostileMsg'
SECRET = 'xylophone7Q'
FORMS = ('html', 'text', 'eml', 'mbox', 'json', 'pdf')
NETWORK = ('http', 'relative-scheme', 'name', 'http6', 'https', 'ftp', 'elsewhere', 'websocket', 'upper', 'broken', 'user', 'share',
           'share-file', 'smb')
MEMORY = ('memory', 'environment', 'maps', 'handle', 'parent', 'shared', 'device')


class Cell(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.home = os.path.realpath(temporary.name)
        for name in ('in', 'run', 'temp', 'secrets'):
            os.mkdir(self.path(name))
        # A picture and a text that are none of the mail's business, beside the mails and elsewhere.
        self.secret = self.path('secrets', 'secret.png')
        for folder in ('secrets', '.', 'in', 'run'):
            with open(self.path(folder, 'secret.png'), 'wb') as file:
                file.write(hostile.PIXEL)
            with open(self.path(folder, 'secret.txt'), 'w') as file:
                file.write(SECRET)
        self.environment = {'PATH': '/usr/bin:/bin', 'LC_ALL': 'C.UTF-8', 'TZ': 'UTC', 'TMPDIR': self.path('temp'), 'PAGER': 'cat',
                            'HOME': self.path('secrets'), 'TARN_SECRET': SECRET}
        # Leaks cannot be looked for in a program that is traced.
        options = os.environ.get('ASAN_OPTIONS', '')
        self.environment['ASAN_OPTIONS'] = options + (':' if options else '') + 'detect_leaks=0'
        self.listener = None

    def path(self, *names):
        return os.path.normpath(os.path.join(self.home, *names))

    @functools.cached_property
    def port(self):
        self.listener = watching.Listener()
        self.addCleanup(self.listener.close)
        return self.listener.port

    def where(self, names=None):
        known = hostile.addresses(self.port, self.secret)
        return known if names is None else {name: known[name].replace('PARENT', str(os.getpid())) for name in names}

    def reaching(self, kind):
        """Files of mails that reach for the network, for files, or for memory."""
        names = {'network': NETWORK, 'memory': MEMORY,
                 'files': [name for name in hostile.addresses(0, '') if name not in NETWORK + MEMORY]}[kind]
        files = hostile.html_mails(self.where(names), {'network': ('http', 'share-file'), 'files': ('file', 'upwards'),
                                                       'memory': ('environment',)}[kind])
        if kind != 'memory':
            files.update(hostile.part_mails(self.port, self.secret))
        if kind == 'files':
            files.update(hostile.name_mails())
        return hostile.write(files, self.path('in')) + hostile.write_msg(
            MAKE_MSG, self.path('in'), self.where(names), f'http://127.0.0.1:{self.port}/msg' if kind == 'network' else self.secret)

    def traced(self, *words, status=(0,)):
        said, trace = watching.traced([TARNMAIL, *words], self.path('run'), self.environment, status)
        self.assertTrue(trace.opened())
        return said, trace

    def run_well(self, *words, status=(0,), **environment):
        run = subprocess.run([TARNMAIL, *words], cwd=self.path('run'), env=dict(self.environment, **environment),
                             stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=280)
        self.assertIn(run.returncode, status, run.stderr.decode(errors='replace'))
        return run.stdout

    def assert_no_network(self, trace):
        self.assertEqual(trace.network(), [])

    def assert_nobody_was_asked(self):
        self.assertEqual(self.listener.end(), [])

    def assert_own_files_alone(self, trace, *own):
        """Only the mail, what is made of it, and what the system holds is touched; and nothing is run but programs of this
        project, and those that they are known to run."""
        allowed = (*own, self.path('temp'), *watching.SYSTEM, BUILD, os.path.realpath(BUILD))
        for path, line in trace.files():
            is_own = path.startswith((*own, self.path('temp')))
            self.assertFalse('secret' in path.replace(self.path('secrets'), '') and not is_own, line)
            self.assertFalse('escaped' in path and not is_own, line)
            if re.match(r'\d+ +(\w+)', line)[1] in watching.LOOKING or ' = -1 ' in line:
                continue
            self.assertTrue(path.startswith(allowed) or path in ('/', '/tmp', '/var/tmp', self.path('run')) or watching.is_of_a_process(path), line)
        for path, line in trace.programs():
            self.assertTrue(path.startswith(('/usr/bin/', '/usr/lib/', '/bin/', BUILD, os.path.realpath(BUILD))), line)
            self.assertNotIn(os.path.basename(path), ('curl', 'wget', 'touch'), line)

    def tree(self, *without):
        """Every file and folder below the home of the test, but for those."""
        found = set()
        for folder, folders, files in os.walk(self.home):
            folders[:] = [name for name in folders if os.path.join(folder, name) not in without]
            found.update(os.path.join(folder, name) for name in folders + files)
        return found

    def assert_no_memory(self, trace):
        """Nobody looks into a process, its environment included; of its own what libraries read."""
        self.assertEqual(trace.memory(), [])
        for path, line in trace.opened():
            if path.startswith(self.home):
                continue
            self.assertFalse(re.search(r'^/proc/.*/(mem|environ|auxv|stack|syscall)$|^/dev/(shm/|mem|zero|kmem)', path), line)
            self.assertFalse(re.search(r'^/proc/%d/' % os.getpid(), path), line)

    def assert_harmless(self, text, place, **options):
        self.assertEqual(watching.harm(text, **options), [], f'{place}: {text[-3000:]!r}')

    def shown_on_terminal(self, *words, status=(0,), **options):
        got, code = watching.on_terminal([TARNMAIL, *words], self.path('run'), self.environment)
        self.assertIn(code, status, got)
        self.assert_harmless(got, words, **options)
        return got


class Pages(Cell):
    def made(self, path):
        """The trace of making pages of it, and their words."""
        said, trace = self.traced('pages', '--no-sandbox', '--pdf', '-o', 'out.pdf', path, status=(0, 1))
        if path.endswith('/locations.eml'):
            # A picture whose name leads out of the folder of temporary files has no file, and the mail no document.
            self.assertEqual(said.decode(), f'tarnmail: {path}: a temporary file or directory could not be made (-1490)\n')
            return trace, ''
        words = subprocess.run(['/usr/bin/pdftotext', '-raw', self.path('run/out.pdf'), '-'], stdout=subprocess.PIPE, check=True).stdout
        self.assertIn(b'shown', words)
        self.assertEqual(said, b'')
        os.remove(self.path('run/out.pdf'))
        return trace, words.decode()

    def test_network(self):
        for path in self.reaching('network'):
            with self.subTest(path):
                self.assert_no_network(self.made(path)[0])
        self.assert_nobody_was_asked()

    def test_files(self):
        for path in self.reaching('files'):
            before = self.tree(self.path('temp'))
            with self.subTest(path):
                trace, words = self.made(path)
                self.assert_own_files_alone(trace, path, self.path('run/out'), self.path('run'))
                self.assertNotIn(SECRET, words)
                self.assertEqual(self.tree(self.path('temp')), before)

    def test_memory(self):
        for path in self.reaching('memory'):
            with self.subTest(path):
                trace, words = self.made(path)
                self.assert_no_memory(trace)
                self.assertNotIn(SECRET, words)
        # What a picture lacks is not what the memory held before.
        [path] = hostile.write({'half.eml': hostile.half_pictures()}, self.path('in'))
        pages = set()
        for fill in ('1', '170'):
            self.run_well('pages', '--no-sandbox', '-o', 'out-' + fill, path, MALLOC_PERTURB_=fill)
            with open(self.path('run', 'out-' + fill, 'page-0001.png'), 'rb') as file:
                pages.add(file.read())
        self.assertEqual(len(pages), 1)

    def test_terminal(self):
        paths = hostile.write(hostile.code_mails(few=True), self.path('in'))
        for path in [*paths, self.name_of_codes()]:
            for words in (['pages', '-o', 'out', path], ['pages', '--pdf', '-o', 'out.pdf', path], ['info', path],
                          ['info', '--pages', path], ['info', '--json', path], ['attachments', path], ['attachments', '--json', path],
                          ['extract', path, '2'], ['extract', path, '3'], ['extract', path, '99'],
                          ['pages', '-m', '9', '-o', 'out', path]):
                with self.subTest(words):
                    allowed = '\n\t\f\ufeff' if words[0] == 'extract' else '\n\t'
                    self.shown_on_terminal(*words, status=(0, 1, 2), allowed=allowed)

    def name_of_codes(self):
        path = self.path('in', 'name' + hostile.ALL_CODES.replace('\x00', '').replace('/', '') + '.eml').encode()
        with open(path, 'wb') as file:
            file.write(b'no mail')
        return path.decode()


class Show(Cell):
    def shown(self, path):
        """The traces of showing it in each way, with what was shown."""
        for words in (['show'], ['show', '--headers'], ['show', '--all-attachments', 'out'], ['list', '--json'], ['list']):
            yield self.traced(*words, path, status=(0, 1))
        subprocess.run(['rm', '-rf', self.path('run/out')], check=True)

    def test_network(self):
        for path in self.reaching('network'):
            for said, trace in self.shown(path):
                with self.subTest(path):
                    self.assert_no_network(trace)
        self.assert_nobody_was_asked()

    def test_files(self):
        for path in self.reaching('files'):
            before = self.tree(self.path('temp'))
            for said, trace in self.shown(path):
                with self.subTest(path):
                    self.assert_own_files_alone(trace, path, self.path('run/out'))
                    self.assertNotIn(SECRET.encode(), said)
                    self.assertEqual(self.tree(self.path('temp'), self.path('run/out')) - {self.path('run/out')}, before)

    def test_memory(self):
        for path in self.reaching('memory'):
            for said, trace in self.shown(path):
                with self.subTest(path):
                    self.assert_no_memory(trace)
                    self.assertNotIn(SECRET.encode(), said)
            # What is shown does not depend on what the memory held before.
            self.assertEqual(len({self.run_well('show', path, MALLOC_PERTURB_=fill) for fill in ('1', '170')}), 1)

    def test_terminal(self):
        for path in hostile.write(hostile.code_mails(), self.path('in')):
            ways = [['show', path], ['show', '--headers', path]]
            if '/codes-' in path:
                numbers = range(1, 9) if path.endswith('/codes-0.eml') else [1]
                ways += [['show', '--all-attachments', 'out', path], ['show', path, '1/' + hostile.ALL_CODES.replace('\x00', '')],
                         *(['show', '--attachment', str(number), path] for number in numbers)]
            for words in ways:
                with self.subTest(words):
                    allowed = '\n\t\f\ufeff' if '--attachment' in words else '\n\t'
                    got = self.shown_on_terminal(*words, status=(0, 1, 2), allowed=allowed)
                    if words == ['show', path]:
                        self.assertIn(b'From:', got)
        for words in (['list'], ['list', '--json'], ['list', '--folders'], ['list', '--folder', 'x'], ['show']):
            with self.subTest(words):
                self.shown_on_terminal(*words, self.path('in'), status=(0, 1, 2))


class Export(Cell):
    def exported(self, form, paths):
        said, trace = self.traced('export', '--no-sandbox', '-o', 'out', '--to', form, *paths, status=(0, 1))
        with open(self.path('run/out/manifest.jsonl'), encoding='utf-8') as manifest:
            rows = [json.loads(line) for line in manifest]
        self.assertGreaterEqual(len([row for row in rows if row['type'] == 'item' and row['status'] != 'failed']), len(paths))
        return said, trace

    def clean(self):
        subprocess.run(['rm', '-rf', self.path('run/out')], check=True)

    def test_network(self):
        paths = self.reaching('network')
        for form in FORMS:
            with self.subTest(form):
                self.assert_no_network(self.exported(form, paths)[1])
                self.clean()
        self.assert_nobody_was_asked()

    def test_files(self):
        paths = self.reaching('files')
        for form in FORMS:
            before = self.tree(self.path('temp'))
            with self.subTest(form):
                said, trace = self.exported(form, paths)
                self.assert_own_files_alone(trace, self.path('run/out'), *paths)
                self.assertEqual(self.tree(self.path('temp'), self.path('run/out')) - {self.path('run/out')}, before)
                self.assertEqual(self.run_well('verify', 'out'), b'')
                for place in self.tree(self.path('temp'), self.path('in'), self.path('secrets')):
                    self.assertFalse(os.path.islink(place), place)
                    if place.startswith(self.path('run/out')) and os.path.isfile(place):
                        with open(place, 'rb') as file:
                            self.assertNotIn(SECRET.encode(), file.read(), place)
                self.clean()

    def test_memory(self):
        paths = self.reaching('memory')
        for form in FORMS:
            with self.subTest(form):
                self.assert_no_memory(self.exported(form, paths)[1])
                self.clean()
        # A mail looks the same after one with secrets, read by the same processes, and whatever memory held.
        [half] = hostile.write({'half.eml': hostile.half_pictures()}, self.path('in'))
        secrets = hostile.write({'first.eml': hostile.full_of(SECRET)}, self.path('in'))
        made = []
        for out, sources, fill in (('alone', [half], '1'), ('after', [*secrets, half], '170')):
            self.run_well('export', '-o', out, '--to', ','.join(FORMS), '-j1', *sources, MALLOC_PERTURB_=fill)
            folder = self.path('run', out, 'half.eml')
            found = {}
            for below, _, names in os.walk(folder):
                for name in names:
                    with open(os.path.join(below, name), 'rb') as file:
                        found[os.path.relpath(os.path.join(below, name), folder)] = file.read()
            made.append(found)
        self.assertEqual(made[0], made[1])
        self.assertTrue(any(name.endswith('.pdf') for name in made[0]))
        self.assertFalse(any(SECRET.encode() in content for content in made[0].values()))

    def test_terminal(self):
        hostile.write(hostile.code_mails(), self.path('in'))
        # A source and a folder of such names too.
        codes = hostile.ALL_CODES.replace('\x00', '').replace('/', '')
        os.mkdir(self.path('in', 'folder' + codes))
        hostile.write({'mail' + codes + '.eml': hostile.full_of('shown')}, self.path('in', 'folder' + codes))
        self.shown_on_terminal('export', '-o', 'out', '--to', ','.join(FORMS[:5]), self.path('in'), self.path('in', 'none' + codes),
                               status=(2,))
        for words in (['verify', 'out'], ['search', 'out', 'shown'], ['search', 'out', '--json', 'shown'], ['list', 'out'],
                      ['search', 'out', 'abc']):
            self.shown_on_terminal(*words, status=(0, 1))
        # Names and what machines read can be shown as they are. Texts and pages hold no control characters; marks of
        # direction belong to the writing of some languages, and stay. Mails are what they were.
        marks = '\n\r\t\f' + ''.join(watching.TURNING)
        for place in self.tree(self.path('temp'), self.path('in'), self.path('secrets')):
            name = os.path.relpath(place, self.path('run'))
            self.assert_harmless(name.encode(), place, allowed='')
            if os.path.isfile(place) and 'attachments' not in name and name.endswith(('.txt', '.json', '.jsonl', '.js', '.html')):
                with open(place, 'rb') as file:
                    self.assert_harmless(file.read(), place, allowed=marks if name.endswith(('.txt', '.html')) else '\n\t')


class Page(Cell):
    """The browser is Chromium without its own walls: what stops a mail is in the page."""

    def setUp(self):
        super().setUp()
        sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), '../archive/catalogue'))
        import browser
        self.browser_class = browser.Browser

    def browser(self, *options):
        one = self.browser_class(sys.argv[2], options=options)
        self.addCleanup(one.__exit__)
        return one

    def export(self, paths):
        self.run_well('export', '-o', 'out', *paths, status=(0, 1))
        return 'file://' + self.path('run/out/index.html')

    def opened(self, paths):
        """The page, after each of its messages was opened in it; what the message saw, by its subject."""
        browser = self.browser('--host-resolver-rules=MAP *.example.invalid 127.0.0.1')
        browser.open(self.export(paths))
        count = browser.wait("typeof mail === 'object' && mail.rows.length > 0 && mail.rows.length")
        self.assertGreaterEqual(count, len(paths))
        browser.value("window.said = []; addEventListener('message', (event) => said.push(event.data))")
        seen = []
        for number in range(count):
            browser.value("document.getElementById('list').focus()")
            browser.key('ArrowDown', 40)
            if number == 0:
                browser.key('Enter', 13)
            url = browser.wait(f"document.getElementById('frame').src !== {json.dumps(seen[-1][0] if seen else '')} && "
                               "document.getElementById('frame').src")
            seen.append((url, browser.frame(url)))
        self.assertEqual(len({url for url, _ in seen}), count)
        browser.value('new Promise((done) => setTimeout(done, 300))')
        return browser, seen

    @staticmethod
    def asked(browser):
        """What it asked for; what the rules of the page stopped is told too, and never sent."""
        stopped = {each['params']['requestId'] for each in browser.events if each.get('method') == 'Network.loadingFailed' and
                   each['params'].get('blockedReason') == 'csp'}
        return [each['params']['request']['url'] for each in browser.events if each.get('method') == 'Network.requestWillBeSent' and
                each['params']['requestId'] not in stopped]

    def test_network(self):
        browser, _ = self.opened(self.reaching('network'))
        asked = self.asked(browser)
        self.assertTrue(any(url.endswith('message.html') for url in asked))
        self.assertEqual([url for url in asked if not url.startswith(('file:', 'data:'))], [])
        self.assert_nobody_was_asked()

    def test_files(self):
        browser, seen = self.opened(self.reaching('files'))
        for url in self.asked(browser):
            if url.startswith('file:'):
                self.assertTrue(url.startswith('file://' + self.path('run/out')), url)
        links = browser.value("Array.from(document.links).map((each) => each.href)")
        for url, _ in seen:
            self.assertTrue(url.startswith('file://' + self.path('run/out')), url)
        for link in links:
            self.assertTrue(urllib.parse.unquote(link).startswith('file://' + self.path('run/out')), link)
        self.assert_nobody_was_asked()

    def test_memory(self):
        """Of the page, which holds all mails: the frame of one sees none of it, and says nothing to it."""
        paths = self.reaching('memory') + hostile.write({'secret.eml': hostile.full_of(SECRET)}, self.path('in'))
        browser, seen = self.opened(paths)
        self.assertEqual(browser.value('said'), [])
        self.assertIn(SECRET, browser.value('JSON.stringify(mail.rows) + document.body.textContent'))
        frame = seen[-1][1]
        for reach in ('parent.mail', 'parent.document.body', 'top.frames[0].document.body && parent.mail.rows', 'localStorage.length',
                      'document.cookie', 'sessionStorage.length', 'opener.mail', 'indexedDB.open("x")'):
            got = browser.value('(() => { try { return String(%s) } catch (error) { return "refused" } })()' % reach, frame)
            self.assertEqual(got, 'refused', reach)
        self.assertEqual(browser.value('document.scripts.length', frame), 0)

    def test_terminal(self):
        """What the browser tells whoever started it, and what the page shows, is text."""
        browser, _ = self.opened(hostile.write(hostile.code_mails(few=True), self.path('in')))
        told = [each for each in browser.events if each.get('method') in ('Runtime.consoleAPICalled', 'Runtime.exceptionThrown')]
        self.assertEqual(told, [])
        self.assert_harmless(browser.value('document.title').encode(), 'title')
        self.assertEqual(watching.harm(browser.written()), [])
        # Marks that turn the writing end with the field that they are in.
        kinds = browser.value("""Array.from(document.querySelectorAll('.row > *')).map((each) => {
            const style = getComputedStyle(each);
            return style.display === 'none' || style.display === 'block' || style.unicodeBidi === 'isolate'; })""")
        self.assertGreater(len(kinds), 3)
        self.assertNotIn(False, kinds)


class Watchers(Cell):
    """That they see what there is to be seen."""

    def test_see_the_network(self):
        for family, host in (('AF_INET', '127.0.0.1'), ('AF_INET6', '::1')):
            _, trace = watching.traced(['/usr/bin/python3', '-c', 'import socket; socket.socket(socket.%s).connect(("%s", %d))' %
                                        (family, host, self.port)], self.path('run'), self.environment)
            self.assertEqual(len(trace.network()), 2, trace.network())
        self.assertEqual(len(self.listener.end()), 2)

    def test_see_files(self):
        for reach in (f'open({self.secret!r})', 'open("../secret.png")', 'open("escaped", "w")', '__import__("os").remove("secret.txt")',
                      'open("/root/.profile")'):
            _, trace = watching.traced(['/usr/bin/python3', '-c', reach], self.path('run'), self.environment)
            with self.assertRaises(AssertionError, msg=reach):
                self.assert_own_files_alone(trace, self.path('run/out'))

    def test_see_memory(self):
        for reach in ('open("/proc/self/mem", "rb")', 'open("/proc/self/environ")', 'open("/proc/%d/maps")' % os.getpid(),
                      '__import__("ctypes").CDLL(None).process_vm_readv(1, 0, 0, 0, 0, 0)'):
            _, trace = watching.traced(['/usr/bin/python3', '-c', reach], self.path('run'), self.environment)
            with self.assertRaises(AssertionError, msg=reach):
                self.assert_no_memory(trace)

    def test_see_codes(self):
        for code in hostile.CODES:
            got, _ = watching.on_terminal(['/usr/bin/printf', '%s', 'x' + code.replace('\x00', '\x1b') + 'x'], self.path('run'),
                                          self.environment)
            self.assertNotEqual(watching.harm(got), [], repr(code))

    def test_see_a_browser(self):
        """The same mails, as they are, make it ask."""
        sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), '../archive/catalogue'))
        import browser
        with browser.Browser(sys.argv[2], options=['--host-resolver-rules=MAP *.example.invalid 127.0.0.1']) as one:
            with open(self.path('in/raw.html'), 'w') as file:
                file.write(hostile.page('\n'.join(hostile.filled(hostile.CARRIERS, self.where(NETWORK)))))
            one.open('file://' + self.path('in/raw.html'))
            one.wait('document.readyState === "complete"')
            one.value('new Promise((done) => setTimeout(done, 1000))')
        self.assertGreater(len(self.listener.end()), 20)


if __name__ == '__main__':
    row, _, column = sys.argv[3].partition('.')
    unittest.main(argv=[sys.argv[0], '-v', row + ('.test_' + column.lower() if column else '')])

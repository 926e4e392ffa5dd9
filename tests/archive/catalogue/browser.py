"""A browser without a window, driven over a pair of pipes (the DevTools protocol)."""

import json
import os
import select
import signal
import subprocess
import tempfile
import time


class Browser:
    def __init__(self, program, width=1280, height=800, dark=False, options=()):
        self.folder = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        self.log = tempfile.TemporaryFile()
        to_read, self.to = os.pipe()
        self.said, to_write = os.pipe()

        def prepare():
            # The browser reads number 3 and writes number 4.
            os.dup2(to_read, 100)
            os.dup2(to_write, 101)
            os.dup2(100, 3)
            os.dup2(101, 4)

        self.process = subprocess.Popen(
            [program, '--headless=new', '--no-sandbox', '--disable-gpu', '--disable-dev-shm-usage',
             '--remote-debugging-pipe', '--no-first-run', '--disable-background-networking',
             f'--window-size={width},{height}', f'--user-data-dir={self.folder.name}', *options,
             'about:blank'],
            preexec_fn=prepare, close_fds=False, stdin=subprocess.DEVNULL,
            stdout=self.log, stderr=self.log, start_new_session=True,
            env=dict(os.environ, TMPDIR=self.folder.name))
        os.close(to_read)
        os.close(to_write)
        self.waiting = b''
        self.number = 0
        self.session = None
        self.events = []
        self.frames = []  # sessions of frames that have a process of their own
        page = [each for each in self.call('Target.getTargets')['targetInfos']
                if each['type'] == 'page'][0]['targetId']
        self.session = self.call('Target.attachToTarget', targetId=page, flatten=True)['sessionId']
        self.call('Target.setAutoAttach', autoAttach=True, waitForDebuggerOnStart=True, flatten=True)
        for domain in ('Page', 'Runtime', 'Network', 'Log'):
            self.call(domain + '.enable')
        self.call('Emulation.setDeviceMetricsOverride', width=width, height=height,
                  deviceScaleFactor=1, mobile=False)
        self.call('Emulation.setEmulatedMedia', features=[
            {'name': 'prefers-color-scheme', 'value': 'dark' if dark else 'light'}])

    def __enter__(self):
        return self

    def __exit__(self, *ignored):
        # With all that it has started, which would write into its folder again.
        os.killpg(self.process.pid, signal.SIGKILL)
        self.process.wait()
        self.log.close()
        self.folder.cleanup()

    def written(self):
        """What the browser has written to its streams so far."""
        return os.pread(self.log.fileno(), 1 << 24, 0)

    def message(self, timeout):
        while b'\0' not in self.waiting:
            if not select.select([self.said], [], [], timeout)[0]:
                return None
            got = os.read(self.said, 1 << 20)
            if not got:
                raise RuntimeError('the browser has ended')
            self.waiting += got
        first, self.waiting = self.waiting.split(b'\0', 1)
        return json.loads(first)

    def ask(self, method, session=None, **parameters):
        self.number += 1
        request = {'id': self.number, 'method': method, 'params': parameters}
        if session or self.session:
            request['sessionId'] = session or self.session
        os.write(self.to, json.dumps(request).encode() + b'\0')
        return self.number

    def take(self, event):
        self.events.append(event)
        if event.get('method') == 'Target.attachedToTarget' and self.session:
            # The frame waits until everything it does is seen.
            session = event['params']['sessionId']
            self.frames.append(session)
            for method in ('Network.enable', 'Log.enable', 'Runtime.runIfWaitingForDebugger'):
                self.ask(method, session)

    def call(self, method, session=None, **parameters):
        number = self.ask(method, session, **parameters)
        while True:
            answer = self.message(60)
            if answer is None:
                raise RuntimeError('no answer to ' + method)
            if answer.get('id') == number:
                if 'error' in answer:
                    raise RuntimeError(method + ': ' + answer['error']['message'])
                return answer['result']
            self.take(answer)

    def open(self, url):
        self.call('Page.navigate', url=url)

    def value(self, expression, session=None):
        answer = self.call('Runtime.evaluate', session, expression=expression, returnByValue=True,
                           awaitPromise=True)
        if 'exceptionDetails' in answer:
            raise RuntimeError(json.dumps(answer['exceptionDetails']))
        return answer['result'].get('value')

    def wait(self, expression, seconds=30, session=None):
        for _ in range(seconds * 50):
            try:
                got = self.value(expression, session)
            except RuntimeError as error:
                # The page before is going, and the new one is not there yet.
                if 'Inspected target navigated or closed' not in str(error):
                    raise
                got = None
            if got:
                return got
            time.sleep(0.02)
        raise RuntimeError('in vain: ' + expression)

    def frame(self, url, seconds=30):
        """The session of the frame that shows that, once all of it is there."""
        for _ in range(seconds * 50):
            for session in reversed(self.frames):
                try:
                    if self.value("document.readyState === 'complete' && location.href", session) == url:
                        return session
                except RuntimeError:
                    self.frames.remove(session)  # it was of another message
            time.sleep(0.02)
            self.value('0')  # takes what has come meanwhile
        raise RuntimeError('no frame shows ' + url)

    def key(self, key, code=0, text=''):
        for kind in ('keyDown', 'keyUp'):
            self.call('Input.dispatchKeyEvent', type=kind, key=key, windowsVirtualKeyCode=code,
                      text=text if kind == 'keyDown' else '')

    def type(self, text):
        self.call('Input.insertText', text=text)

    def picture(self, path):
        import base64
        data = self.call('Page.captureScreenshot', format='png')['data']
        with open(path, 'wb') as file:
            file.write(base64.b64decode(data))

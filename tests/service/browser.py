"""A page in a real browser, driven through its own protocol over a pipe."""
import base64
import json
import os
import subprocess
import tempfile
import time


class Browser:
    """One page; the browser ends with a with statement."""

    def __init__(self, program):
        self.profile = tempfile.TemporaryDirectory(ignore_cleanup_errors=True) # its helpers may write a moment longer
        to_browser, self.write_end = os.pipe()
        self.read_end, from_browser = os.pipe()

        def descriptors():
            # Those that the browser expects, wherever the pipes are.
            first, second = os.dup(to_browser), os.dup(from_browser)
            os.dup2(first, 3)
            os.dup2(second, 4)

        self.process = subprocess.Popen(
            [program, '--no-sandbox', '--disable-gpu', '--disable-dev-shm-usage', '--remote-debugging-pipe',
             f'--user-data-dir={self.profile.name}', '--window-size=1200,900', 'about:blank'],
            preexec_fn=descriptors, close_fds=False, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(to_browser)
        os.close(from_browser)
        self.number, self.text, self.events, self.session = 0, b'', [], None
        target = self.ask('Target.createTarget', url='about:blank')['targetId']
        self.session = self.ask('Target.attachToTarget', targetId=target, flatten=True)['sessionId']
        for domain in ('Page', 'Runtime', 'Network'):
            self.ask(domain + '.enable')

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()
        os.close(self.write_end)
        os.close(self.read_end)
        self.profile.cleanup()

    def message(self):
        while b'\0' not in self.text:
            more = os.read(self.read_end, 1 << 20)
            assert more, 'the browser is gone'
            self.text += more
        one, self.text = self.text.split(b'\0', 1)
        return json.loads(one)

    def ask(self, method, **parameters):
        self.number += 1
        request = {'id': self.number, 'method': method, 'params': parameters}
        if self.session:
            request['sessionId'] = self.session
        os.write(self.write_end, json.dumps(request).encode() + b'\0')
        while True:
            message = self.message()
            if message.get('id') == self.number:
                assert 'error' not in message, message
                return message['result']
            self.events.append(message)

    def value(self, expression):
        answer = self.ask('Runtime.evaluate', expression=expression, returnByValue=True, awaitPromise=True)
        assert 'exceptionDetails' not in answer, answer
        return answer['result'].get('value')

    def wait(self, expression, seconds=60):
        end = time.monotonic() + seconds
        while not self.value(expression):
            assert time.monotonic() < end, (expression, self.value('document.body.innerText'))
            time.sleep(0.1)

    def type(self, text):
        self.ask('Input.insertText', text=text)

    def press(self, key, code=None):
        more = {'text': '\r'} if key == 'Enter' else {'text': ' '} if key == ' ' else {}
        number = {'Enter': 13, 'Tab': 9, ' ': 32, 'ArrowLeft': 37, 'ArrowUp': 38, 'ArrowRight': 39, 'ArrowDown': 40}[key]
        for kind in ('keyDown', 'keyUp'):
            self.ask('Input.dispatchKeyEvent', type=kind, key=key, code=code or key, windowsVirtualKeyCode=number,
                     **(more if kind == 'keyDown' else {}))

    def show(self, width, height, scheme):
        """The page in a window of that size, in light or dark."""
        self.ask('Emulation.setDeviceMetricsOverride', width=width, height=height, deviceScaleFactor=1, mobile=False)
        self.ask('Emulation.setScrollbarsHidden', hidden=True)
        self.ask('Emulation.setEmulatedMedia', features=[{'name': 'prefers-color-scheme', 'value': scheme}])

    def picture(self, file, part=None):
        """What is in the window, or one element of the page as a whole, with a margin."""
        more = {}
        if part:
            place = self.value("(({x, y, width, height}) => ({x: x + scrollX - 12, y: y + scrollY - 12, "
                               "width: width + 24, height: height + 24, scale: 1}))"
                               f"(document.querySelector('{part}').getBoundingClientRect())")
            more = {'clip': place, 'captureBeyondViewport': True}
        with open(file, 'wb') as stream:
            stream.write(base64.b64decode(self.ask('Page.captureScreenshot', format='png', **more)['data']))

    def requests(self):
        """The addresses that the page has asked for."""
        self.value('0')
        return [event['params']['request']['url'] for event in self.events
                if event.get('method') == 'Network.requestWillBeSent']

#!/usr/bin/env python3
"""pictures.py RADIOCTL BOARDS BROWSER FOLDER

Makes the pictures of the page that docs/service.md shows, in FOLDER: a simulated radio that is driven as somebody would drive it,
in a browser without a window, such as chromium-headless-shell. No two browsers draw alike, and times are in them: they are not
compared with anything; that they show what the page has is asserted while they are made.
"""
import os
import re
import shutil
import sys
import tempfile
import time

if len(sys.argv) != 5:
    sys.exit(__doc__)
sys.dont_write_bytecode = True
os.environ['RADIOCTL'], BOARDS, BROWSER, PICTURES = (os.path.abspath(one) for one in sys.argv[1:])

from browser import Browser  # noqa: E402 (what is driven is told by the environment)
from served import Served  # noqa: E402

BOARD = 'lo-leakage-18ghz'
POINTS = "[...document.querySelectorAll('#calibration-map [role=gridcell]')].filter(cell => cell.textContent === '●').length"


def drive(radio):
    """A few minutes of a radio's day, in seconds."""
    for degrees, tx, rx in ((21, 17947500, 18957500), (23, 18112500, 19122500), (27, 18222500, 19232500), (34, 18387500, 19397500),
                            (38, 17755000, 18765000), (41, 18002500, 19012500)):
        for path, body in (('/api/temperature', {'degrees': degrees}), ('/api/channels/1/tx', {'khz': tx}),
                           ('/api/channels/1/rx', {'khz': rx}), ('/api/channels/2/tx', {'khz': tx + 27500})):
            status, answer, _ = radio.ask('PUT', path, body)
            assert status == 200, answer
        time.sleep(1)


def main():
    with tempfile.TemporaryDirectory() as folder, Browser(BROWSER) as browser:
        for channel in (1, 2):
            shutil.copy(f'{BOARDS}/{BOARD}.channel-{channel}.csv', folder)
        with open(f'{BOARDS}/{BOARD}.toml', encoding='utf-8') as file:
            board = file.read()
        # Paths are shown as somebody sees them who serves a board where it is.
        os.chdir(folder)
        os.environ['HOME'] = folder
        # What a search keeps, which takes more time than a fit and fills a map.
        for limit, value in (('leakage', -60), ('leakage_at_nodes', -70)):
            board, count = re.subn(rf'^{limit} = -\d+', f'{limit} = {value}', board, flags=re.M)
            assert count == 1, f'{limit} is not in {BOARD}'
        with Served('.', board=board) as radio:
            browser.show(1240, 1040, 'light')
            browser.ask('Page.navigate', url=f'http://127.0.0.1:{radio.port}/')
            browser.wait("document.querySelector('#khz-1-tx') !== null")
            drive(radio)
            browser.wait("document.querySelector('#channels').textContent.includes('18002500 kHz')")
            browser.wait("[...document.querySelectorAll('#plots canvas')].some(plot => /temperature.*\\b41\\b/.test(plot.getAttribute('aria-label')))")
            time.sleep(1)
            browser.picture(f'{PICTURES}/service.png')
            browser.show(400, 900, 'dark')
            browser.value("document.querySelector('#plots').scrollIntoView()")
            time.sleep(1)
            browser.picture(f'{PICTURES}/service-400.png')
            browser.show(900, 1000, 'dark')
            radio.ask('POST', '/api/calibrations', {
                'channel': 1, 'method': 'search', 'step_khz': 96250, 'real_time': True, 'settle_time_ms': 2})
            browser.value("document.querySelector('#calibration').scrollIntoView()")
            browser.wait(POINTS + ' > 25', 600)
            browser.picture(f'{PICTURES}/service-dark.png', '#calibration')
            browser.show(900, 1000, 'light')
            browser.wait("document.querySelector('#calibration-verdict').textContent !== ''", 600)
            assert browser.value("document.querySelector('#calibration-verdict').textContent").startswith('PASS'), 'it did not pass'
            time.sleep(1)
            browser.picture(f'{PICTURES}/service-calibration.png', '#calibration')


if __name__ == '__main__':
    main()

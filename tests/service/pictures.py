#!/usr/bin/env python3
"""pictures.py RADIOCTL BOARDS BROWSER FOLDER

Makes the pictures of the page that docs/service.md shows, in FOLDER: a simulated radio that is driven as somebody would drive it,
in a browser without a window, such as chromium-headless-shell.
"""
import os
import re
import shutil
import sys
import tempfile
import time

if len(sys.argv) != 5:
    sys.exit(__doc__)
os.environ['RADIOCTL'], BOARDS, BROWSER, PICTURES = sys.argv[1:]

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
        # What a search keeps, which takes more time than a fit and fills a map.
        board = re.sub(r'^leakage = -\d+', 'leakage = -60', re.sub(r'^leakage_at_nodes = -\d+', 'leakage_at_nodes = -70', board, flags=re.M), flags=re.M)
        with Served(folder, board=board) as radio:
            browser.show(1240, 1000, 'light')
            browser.ask('Page.navigate', url=f'http://127.0.0.1:{radio.port}/')
            browser.wait("document.querySelector('#khz-1-tx') !== null")
            drive(radio)
            browser.wait("document.querySelector('#plots canvas')?.getAttribute('aria-label').includes('41')")
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

"""The page of a served radio, in a real browser."""
import os

import pytest

from browser import Browser
from served import BOARD, Served

BROWSER = os.environ['HEADLESS_BROWSER']
TUNE = "document.querySelector('#khz-1-tx')"
ANSWER = "document.querySelector('#khz-1-tx').closest('form').nextElementSibling"


@pytest.fixture(scope='module')
def browser():
    with Browser(BROWSER) as one:
        yield one


@pytest.fixture
def radio(tmp_path):
    with Served(tmp_path) as served:
        yield served


def open_page(browser, radio):
    browser.events.clear()
    browser.ask('Page.navigate', url=f'http://127.0.0.1:{radio.port}/')
    browser.wait("document.querySelector('#connection')?.className === 'there'")
    browser.wait("document.querySelector('#khz-1-tx') !== null")


def tune_by_keyboard(browser, khz):
    browser.value(f"{TUNE}.value = ''; {TUNE}.focus()")
    browser.type(str(khz))
    browser.press('Enter')


def test_page_says_that_it_is_a_simulation(browser, radio):
    open_page(browser, radio)
    assert browser.value("document.querySelector('#mode').textContent") == 'SIMULATION'
    assert browser.value("document.querySelector('#mode').getAttribute('aria-label')") == 'simulation: nothing reaches hardware'
    assert browser.value('document.title') == 'Served radio, S1'


def test_page_says_that_it_is_hardware(browser, tmp_path):
    with Served(tmp_path, '--hardware') as served:
        open_page(browser, served)
        assert browser.value("document.querySelector('#mode').textContent") == 'HARDWARE'
        assert browser.value("document.querySelector('#faults-section').hidden")


def test_channel_is_tuned_by_keyboard(browser, radio):
    open_page(browser, radio)
    tune_by_keyboard(browser, 7472000)
    browser.wait("document.querySelector('#state-1').textContent.includes('7472000 kHz')")
    browser.wait(f"{ANSWER}.textContent === 'done, code 0'")
    browser.wait("document.querySelector('#drivers').textContent.includes('7472000')")
    assert radio.ask('GET', '/api/channels/1')[1]['tx_khz'] == 7472000


def test_form_knows_the_raster(browser, radio):
    open_page(browser, radio)
    above = "document.querySelector('[aria-label=\"carrier above, tx 1\"]').click()"
    browser.value(above)
    assert browser.value(TUNE + '.value') == '7472000'
    browser.value(above)
    assert browser.value(TUNE + '.value') == '7500000'
    browser.value("document.querySelector('[aria-label=\"carrier below, tx 1\"]').click()")
    assert browser.value(TUNE + '.value') == '7472000'
    assert browser.value(TUNE + '.list.options.length') == 2


def test_what_the_board_does_not_allow_is_shown_with_its_reason(browser, radio):
    open_page(browser, radio)
    tune_by_keyboard(browser, 7)
    browser.wait(f"{ANSWER}.textContent.startsWith('7 kHz is outside the rasters')")
    assert browser.value(f"{ANSWER}.classList.contains('bad')")


def test_fault_is_injected_and_its_failure_shown(browser, radio):
    open_page(browser, radio)
    browser.value("document.querySelector('#fault-object').value = 'channel.1.tx.rf.frequency';"
                  "document.querySelector('#fault-form button').click()")
    browser.wait("document.querySelector('#faults').textContent.includes('driver-write channel.1.tx.rf.frequency 0x8001 always')")
    tune_by_keyboard(browser, 7472000)
    browser.wait(f"{ANSWER}.textContent.includes('channel.1.tx.rf.frequency ← 7472000 failed with 0x8001')")
    browser.wait("document.querySelector('#trace li.error')?.textContent.includes('Write to driver failed')")
    browser.value("document.querySelector('#clear-form button').click()")
    browser.wait("document.querySelector('#faults').childElementCount === 0")


def test_change_of_somebody_else_is_shown(browser, radio):
    open_page(browser, radio)
    radio.ask('PUT', '/api/temperature', {'degrees': 41})
    browser.wait("document.querySelector('#degrees').textContent === '41 °C'")
    radio.ask('PUT', '/api/temperature', {'degrees': 42})
    browser.wait("document.querySelector('#plots svg')?.getAttribute('aria-label') === 'temperature in °C: 42, between 41 and 42'")


def test_texts_of_a_board_are_no_markup(browser, tmp_path):
    with Served(tmp_path, board=BOARD.replace('Served radio', '<img src=x onerror=alert(1)>')) as served:
        open_page(browser, served)
        assert browser.value("document.querySelector('#name').textContent") == '<img src=x onerror=alert(1)>, S1'
        assert browser.value("document.querySelectorAll('img').length") == 0


def test_lost_connection_is_shown_and_comes_back_by_itself(browser, tmp_path):
    with Served(tmp_path) as served:
        open_page(browser, served)
        port = served.port
    browser.wait("document.querySelector('#connection').textContent.startsWith('Connection lost')", 5)
    with Served(tmp_path, listen=f'127.0.0.1:{port}') as served:
        browser.wait("document.querySelector('#connection').textContent === 'Connected'")
        tune_by_keyboard(browser, 7472000)
        browser.wait(f"{ANSWER}.textContent === 'done, code 0'")


@pytest.mark.parametrize('scheme,ground', [('light', 'rgb(255, 255, 255)'), ('dark', 'rgb(18, 22, 27)')])
def test_page_fits_400_pixels_in_light_and_dark(browser, radio, scheme, ground):
    browser.ask('Emulation.setDeviceMetricsOverride', width=400, height=800, deviceScaleFactor=1, mobile=False)
    browser.ask('Emulation.setEmulatedMedia', features=[{'name': 'prefers-color-scheme', 'value': scheme}])
    open_page(browser, radio)
    browser.wait("document.querySelector('#drivers').childElementCount === 3")
    assert browser.value('document.documentElement.scrollWidth') <= 400
    assert browser.value('getComputedStyle(document.body).backgroundColor') == ground
    browser.ask('Emulation.clearDeviceMetricsOverride')
    browser.ask('Emulation.setEmulatedMedia', features=[])


def test_everything_that_takes_input_has_a_name_and_is_reached_by_tab(browser, radio):
    open_page(browser, radio)
    nodes = browser.ask('Accessibility.getFullAXTree')['nodes']
    roles = {'button', 'textbox', 'searchbox', 'spinbutton', 'checkbox', 'combobox', 'region', 'status', 'log'}
    unnamed = [node for node in nodes if not node['ignored'] and node['role']['value'] in roles - {'status'}
               and not node.get('name', {}).get('value')]
    assert unnamed == []
    found = {node['role']['value'] for node in nodes}
    assert {'button', 'spinbutton', 'checkbox', 'combobox', 'status', 'log', 'heading', 'main', 'banner', 'group'} <= found
    wanted = browser.value("[...document.querySelectorAll('input,select,button')].filter(e => !e.disabled && e.checkVisibility()).length")
    browser.value('document.activeElement.blur()')
    seen = set()
    for _ in range(wanted + 10):
        browser.press('Tab')
        seen.add(browser.value("[...document.querySelectorAll('input,select,button')].indexOf(document.activeElement)"))
    assert len(seen - {-1}) == wanted


def test_page_asks_nobody_else(browser, radio):
    open_page(browser, radio)
    tune_by_keyboard(browser, 7472000)
    browser.wait(f"{ANSWER}.textContent === 'done, code 0'")
    addresses = [address for address in browser.requests() if not address.startswith('data:')]
    assert addresses
    assert [address for address in addresses if not address.startswith(f'http://127.0.0.1:{radio.port}/')] == []


def test_token_is_asked_for_by_the_page(browser, tmp_path):
    token = tmp_path / 'token'
    token.write_text('a-token-of-24-characters')
    token.chmod(0o600)
    with Served(tmp_path, '--token', str(token)) as served:
        browser.ask('Page.navigate', url=f'http://127.0.0.1:{served.port}/')
        browser.wait("document.querySelector('#token-section')?.hidden === false")
        browser.value("document.querySelector('#token').focus()")
        browser.type('a-token-of-24-characters')
        browser.press('Enter')
        browser.wait("document.querySelector('#connection').className === 'there'")
        browser.wait("document.querySelector('#khz-1-tx') !== null")

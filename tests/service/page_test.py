"""The page of a served radio, in a real browser."""
import os

import pytest

from browser import Browser
from served import BOARD, LEAKING, MEASURED, Measured, Served

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


@pytest.fixture
def leaking(tmp_path):
    with Served(tmp_path, board=LEAKING) as served:
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
    browser.wait("document.querySelector('#plots canvas')?.getAttribute('aria-label') === 'temperature in °C: 42, between 41 and 42'")


CANVAS = ("[...document.querySelectorAll('#plots figure')].find(figure => figure.querySelector('figcaption').textContent === '{}')"
          "?.querySelector('canvas')")
I_BRANCH = 'channel.1.tx.rf.mixer.i'


def drawn(browser, name):
    """The values of a curve; the last one is what is there at the moment."""
    return browser.value(f"Chart.getChart({CANVAS.format(name)})?.data.datasets[0].data.map(point => point.y)")


def test_plots_have_each_value_that_the_events_tell(browser, leaking):
    open_page(browser, leaking)
    browser.wait(CANVAS.format(I_BRANCH) + '?.getAttribute("aria-label") !== undefined')
    browser.value("document.querySelector('#plots').scrollIntoView()")
    follower = leaking.follow()
    wanted = [0] # what the board begins with
    for value in (-5, 12, 12, 700, -3, 4):
        leaking.ask('PUT', '/api/drivers/' + I_BRANCH, {'value': value})
        wanted += [event['value'] for _, event in follower.until('change') if event['event'] == 'call' and event['destination'] == I_BRANCH]
    follower.close()
    assert wanted == [0, -5, 12, 12, 700, -3, 4]
    browser.wait(f"Chart.getChart({CANVAS.format(I_BRANCH)})?.data.datasets[0].data.length === 8")
    assert drawn(browser, I_BRANCH) == wanted + [4]
    assert browser.value(CANVAS.format(I_BRANCH) + ".getAttribute('aria-label')") == f'{I_BRANCH}: 4, between -5 and 700'
    # A driver that refuses a value keeps what it had.
    leaking.ask('POST', '/api/faults', {'operation': 'driver-write', 'object': I_BRANCH, 'code': 0x8001})
    leaking.ask('PUT', '/api/drivers/' + I_BRANCH, {'value': 9})
    leaking.ask('DELETE', '/api/faults')
    leaking.ask('PUT', '/api/drivers/' + I_BRANCH, {'value': 8})
    browser.wait(f"Chart.getChart({CANVAS.format(I_BRANCH)}).data.datasets[0].data.length === 9")
    assert drawn(browser, I_BRANCH) == wanted + [8, 8]


def test_leakage_is_drawn_as_the_radio_has_it(browser, leaking):
    open_page(browser, leaking)
    name = 'leakage of channel 1 in dBc'
    leaking.ask('PUT', '/api/channels/1/tx', {'khz': 18000000})
    # A twentieth of the signal, and with that taken away what the model has as its least.
    for value, said in ((0, '-26.02, between -26.02 and -26.02'), (-500, '-120, between -120 and -26.02')):
        leaking.ask('PUT', '/api/drivers/' + I_BRANCH, {'value': value})
        browser.wait(CANVAS.format(name) + f"?.getAttribute('aria-label') === '{name}: {said}'")
    browser.value("document.querySelector('#plots').scrollIntoView()")
    browser.wait(f"Chart.getChart({CANVAS.format(name)}) !== undefined")
    points = drawn(browser, name)
    assert round(points[0], 2) == -26.02 and points[1:] == [-120, -120]


def test_plot_is_gone_along_by_keyboard(browser, leaking):
    open_page(browser, leaking)
    for value in (-5, 12):
        leaking.ask('PUT', '/api/drivers/' + I_BRANCH, {'value': value})
    browser.value("document.querySelector('#plots').scrollIntoView()")
    browser.wait(f"Chart.getChart({CANVAS.format(I_BRANCH)})?.data.datasets[0].data.length === 4")
    browser.value(CANVAS.format(I_BRANCH) + '.focus()')
    for key, value in (('ArrowLeft', 12), ('ArrowLeft', -5), ('ArrowLeft', 0), ('ArrowLeft', 0), ('ArrowRight', -5)):
        browser.press(key)
        said = browser.value("document.querySelector('#plot-point').textContent")
        assert said.startswith(I_BRANCH + ', ') and said.endswith(f': {value}')
    assert browser.value(f"Chart.getChart({CANVAS.format(I_BRANCH)}).getActiveElements()[0].index") == 1


def test_plots_do_not_move_by_themselves_and_follow_the_colours(browser, leaking):
    browser.ask('Emulation.setEmulatedMedia', features=[{'name': 'prefers-color-scheme', 'value': 'light'}])
    open_page(browser, leaking)
    browser.value("document.querySelector('#plots').scrollIntoView()")
    chart = f'Chart.getChart({CANVAS.format(I_BRANCH)})'
    browser.wait(f'{chart} !== undefined')
    assert browser.value(f'{chart}.options.animation') is False
    assert browser.value(f'{chart}.data.datasets[0].borderColor') == '#0550ae'
    browser.ask('Emulation.setEmulatedMedia', features=[{'name': 'prefers-color-scheme', 'value': 'dark'}])
    browser.wait(f"{chart}.data.datasets[0].borderColor === '#79b8ff'")
    # Drawn, too: the curve's colour is on the canvas.
    found = """(() => {{
        const canvas = {canvas}, pixels = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height).data;
        for (let n = 0; n < pixels.length; n += 4) if (pixels[n] === 0x79 && pixels[n + 1] === 0xb8 && pixels[n + 2] === 0xff && pixels[n + 3] === 255) return true;
        return false; }})()"""
    browser.wait(found.format(canvas=CANVAS.format(I_BRANCH)))
    browser.ask('Emulation.setEmulatedMedia', features=[])


def test_page_has_what_draws_its_plots_with_its_licence(browser, radio):
    open_page(browser, radio)
    page = radio.ask('GET', '/')[1]
    with open('/usr/share/javascript/chart.js/chart.min.js', encoding='utf-8') as file:
        assert f'<script>{file.read()}</script>' in page
    with open('/usr/share/doc/libjs-chart.js/copyright', encoding='utf-8') as file:
        assert browser.value("document.querySelector('footer pre').textContent").strip() == file.read().strip()


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


CELLS = "[...document.querySelectorAll('#calibration-map [role=gridcell]')]"


def text_of(browser, name):
    return browser.value(f"document.querySelector('#calibration-{name}').textContent")


def test_calibration_is_begun_by_keyboard_and_shown_to_its_verdict(browser, leaking):
    open_page(browser, leaking)
    assert browser.value("document.querySelector('#calibration').hidden")
    browser.value("document.querySelector('#calibration-temperatures').focus()")
    browser.type('50, -10')
    browser.press('Enter')
    browser.wait("document.querySelector('#calibration-verdict').textContent !== ''")
    # What is of no use now is not seen, either.
    assert not browser.value("document.querySelector('#cancel-form').checkVisibility() || document.querySelector('#awaited-form').checkVisibility()")
    assert text_of(browser, 'name') == 'Calibration 1 of channel 1, search'
    assert text_of(browser, 'verdict').startswith('PASS: complete, 6 good, 0 missed, 0 at an edge, 0 failed; leaks at most -')
    assert text_of(browser, 'verdict').endswith(f'; tables are in {leaking.folder}/board.channel-1.csv')
    assert text_of(browser, 'limits').startswith('leakage_at_nodes -40: found -')
    assert text_of(browser, 'state') == 'complete, 6 of 6 points'
    assert browser.value("document.querySelector('#calibration-progress').value") == 1
    assert browser.value("document.querySelector('#cancel-form').hidden")
    # The warmest above, as on a map; each said in words.
    browser.wait(CELLS + ".filter(cell => cell.textContent === '●').length === 6")
    names = browser.value(CELLS + ".map(cell => cell.getAttribute('aria-label').split(',').slice(0, 2).join())")
    assert names == [f'{khz} kHz, {degrees} °C: good' for degrees in (50, -10) for khz in (17900000, 18000000, 18100000)]
    rows = browser.value("[...document.querySelectorAll('#calibration-points tr')].map(row => row.cells[0].textContent + ' ' + row.cells[1].textContent)")
    assert rows == [f'{khz} kHz, {degrees} °C ● good' for degrees in (-10, 50) for khz in (17900000, 18000000, 18100000)]
    assert 'calibration 1 is over: pass' in browser.value("document.querySelector('#trace').textContent")


def test_map_is_gone_through_by_arrow_keys(browser, leaking):
    leaking.ask('POST', '/api/calibrations', {'channel': 1})
    open_page(browser, leaking)
    browser.wait(CELLS + ".filter(cell => cell.textContent === '●').length === 6")
    assert browser.value(CELLS + ".filter(cell => cell.tabIndex === 0).length") == 1
    browser.value(CELLS + "[0].focus()")
    for key, khz, degrees in (('ArrowRight', 18000000, 50), ('ArrowDown', 18000000, -10), ('ArrowDown', 18000000, -10),
                              ('ArrowLeft', 17900000, -10), ('ArrowUp', 17900000, 50)):
        browser.press(key)
        assert text_of(browser, 'point').startswith(f'{khz} kHz, {degrees} °C: good, -')
    assert browser.value(CELLS + ".filter(cell => cell.tabIndex === 0).length") == 1


def test_points_fill_up_while_it_goes_on_and_cancelling_keeps_them(browser, leaking):
    open_page(browser, leaking)
    leaking.ask('POST', '/api/calibrations', {'channel': 1, 'real_time': True, 'settle_time_ms': 20, 'qualify': False})
    some = CELLS + ".some(cell => cell.textContent === '●') && " + CELLS + ".some(cell => cell.textContent === '·')"
    browser.wait(some)
    assert browser.value(CELLS + ".filter(cell => cell.textContent === '·')[0].getAttribute('aria-label').endsWith(': to come')")
    assert text_of(browser, 'state').startswith('running, ')
    tune_by_keyboard(browser, 18000000)
    browser.wait(f"{ANSWER}.textContent.startsWith('calibration 1 of channel 1 has the radio')")
    browser.value("document.querySelector('#cancel-form button').focus()")
    browser.press('Enter')
    browser.wait("document.querySelector('#calibration-verdict').textContent.endsWith('what was measured is kept, and can be resumed')")
    assert text_of(browser, 'verdict').startswith('CANCELLED: cancelled, ')
    assert browser.value(some)
    # To its verdict from where it was.
    browser.value("document.querySelector('#calibration-beginning').value = 'resume';"
                  "document.querySelector('#calibration-qualify').checked = false;"
                  "document.querySelector('#calibration-form button').click()")
    browser.wait("document.querySelector('#calibration-verdict').textContent.startsWith('PASS: complete, 6 good')")


def test_why_a_calibration_does_not_begin_is_shown(browser, radio):
    open_page(browser, radio)
    browser.value("document.querySelector('#calibration-form button').click()")
    browser.wait("document.querySelector('#calibration-answer').textContent.endsWith('expected a [[leakage]]')")
    assert browser.value("document.querySelector('#calibration-answer').classList.contains('bad')")


def test_person_says_on_the_page_that_a_temperature_is_there(browser, tmp_path):
    with Measured(tmp_path, board=MEASURED) as served:
        open_page(browser, served)
        served.ask('POST', '/api/calibrations', {'channel': 1, 'temperatures_c': [10, 30], 'settle_time_ms': 0, 'qualify': False,
                                                 'max_iterations': 1, 'attended': True})
        for degrees in (10, 30):
            browser.wait(f"document.querySelector('#calibration-state').textContent.includes('waiting for {degrees} °C')")
            assert browser.value("document.querySelector('#awaited-form').checkVisibility()")
            browser.value("document.querySelector('#awaited-degrees').focus()")
            browser.press('Enter')
        browser.wait("document.querySelector('#calibration-verdict').textContent.startsWith('No limits to judge by: complete')")
        assert browser.value("document.querySelector('#awaited-form').hidden")


def test_fit_is_mapped_where_it_was(browser, leaking):
    leaking.ask('POST', '/api/calibrations', {'channel': 1, 'method': 'fit', 'probes': 100})
    open_page(browser, leaking)
    browser.wait("document.querySelector('#calibration-verdict').textContent !== ''")
    points = leaking.ask('GET', '/api/calibrations/1')[1]['points']
    browser.wait(CELLS + f".filter(cell => cell.textContent !== '').length === {len({(one['khz'], one['degrees']) for one in points})}")


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

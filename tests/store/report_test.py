"""What many runs say together."""
import math
import random
import re

import pytest

from support import events, event, made_up, radioctl, write_runs

STORE = 'sqlite:units.sqlite'


@pytest.fixture
def here(tmp_path):
    return tmp_path


def report(here, runs, *options):
    write_runs(here / 'runs.json', *runs)
    added = radioctl(here, 'store', 'import', 'runs.json', '--store', STORE)
    assert added.returncode == 0, added.stderr
    ran = radioctl(here, 'store', 'report', '--store', STORE, '--json', *options)
    assert ran.returncode == 0, ran.stderr
    return ran


def measured(ran):
    return {one['name']: one for one in events(ran) if one['event'] == 'report_measurement'}


def run_of(value, serial, begun='2026-03-01T09:30:00Z', **more):
    """A run that measured one thing, with a limit of -60."""
    run = made_up(serial=serial, begun=begun, measurements=1, **more)
    run['measurements'][0]['value'] = value
    return run


def test_yield_is_of_the_runs_that_were_judged_by_day_and_station(here):
    runs = [run_of(-70, f'U{n}', begun=f'2026-03-0{1 + n // 4}T10:00:00Z', station=f'bench-{n % 2}', verdict=verdict)
            for n, verdict in enumerate(['pass', 'fail', 'pass', 'pass', 'fail', 'none', 'pass', 'pass'])]
    ran = report(here, runs)
    yields = [(one['day'], one['station'], one['runs'], one['passed'], one['failed'], one['yield'])
              for one in events(ran) if one['event'] == 'report_yield']
    assert yields == [('2026-03-01', 'bench-0', 2, 2, 0, 1.0), ('2026-03-01', 'bench-1', 2, 1, 1, 0.5),
                      ('2026-03-02', 'bench-0', 2, 1, 1, 0.5), ('2026-03-02', 'bench-1', 2, 1, 0, 1.0)]
    end = event(ran, 'reported')
    assert (end['runs'], end['units'], end['passed'], end['failed']) == (8, 8, 5, 2)
    assert math.isclose(end['yield'], 5 / 7)


def test_cpk_is_the_distance_to_the_limit_in_threes_of_deviations(here):
    # Mean -70, squares 4 + 0 + 4 over 2: deviation 2. The limit is 10 above: 10 / 6.
    one = measured(report(here, [run_of(value, f'U{value}') for value in (-72, -70, -68)]))['leakage_after']
    assert (one['values'], one['mean'], one['deviation'], one['least'], one['most']) == (3, -70, 2, -72, -68)
    assert math.isclose(one['cpk'], 10 / 6)


def test_of_two_limits_the_nearer_counts(here):
    runs = [run_of(value, f'U{value}') for value in (-72, -70, -68)]
    for run in runs:
        run['measurements'][0]['lowest'] = -73.0
    assert math.isclose(measured(report(here, runs))['leakage_after']['cpk'], 3 / 6)


def test_one_value_has_no_deviation_and_equal_ones_no_cpk(here):
    one = measured(report(here, [run_of(-70, 'A')]))['leakage_after']
    assert (one['deviation'], one['cpk']) == (None, None)
    both = measured(report(here, [run_of(-70, 'B')]))['leakage_after']
    assert (both['deviation'], both['cpk']) == (0, None)


def test_limit_that_was_missed_is_counted(here):
    runs = [run_of(-70, 'A'), run_of(-50, 'B')]
    runs[1]['measurements'][0]['held'] = False
    one = measured(report(here, runs))['leakage_after']
    assert (one['judged'], one['missed']) == (2, 1)


def test_histogram_has_every_value_once_in_bins_of_a_power_of_two(here):
    chance = random.Random(7)
    values = [chance.gauss(-70.0, 3.0) for _ in range(500)]
    one = measured(report(here, [run_of(value, f'U{n}') for n, value in enumerate(values)]))['leakage_after']
    begin, width, counts = (one['histogram'][name] for name in ('begin', 'width', 'counts'))
    assert math.log2(width).is_integer() and (begin / width).is_integer() and len(counts) <= 64
    assert len(counts) > 16
    wanted = [0] * len(counts)
    for value in values:
        wanted[math.floor((value - begin) / width)] += 1
    assert counts == wanted


def test_histogram_does_not_depend_on_the_order_of_the_runs(here):
    values = [-70.0, 12.5, 0.0, -0.001, 900.0, -70.5]
    histograms = []
    for number, order in enumerate((values, list(reversed(values)))):
        folder = here / str(number)
        folder.mkdir()
        runs = [run_of(value, f'U{n}') for n, value in enumerate(order)]
        histograms.append(measured(report(folder, runs))['leakage_after']['histogram'])
    assert histograms[0] == histograms[1] and sum(histograms[0]['counts']) == 6


def test_drift_is_from_one_run_of_a_unit_to_its_next_in_time(here):
    runs = [run_of(-70.0, 'A', '2026-03-03T00:00:00Z'), run_of(-74.0, 'A', '2026-03-01T00:00:00Z'), run_of(-73.0, 'A', '2026-03-02T00:00:00Z'),
            run_of(-60.5, 'B', '2026-03-01T00:00:00Z')]
    drift = measured(report(here, runs))['leakage_after']['drift']
    # A goes from -74 by +1 and +3; B has no other run.
    assert (drift['changes'], drift['mean']) == (2, 2)
    assert drift['largest'] == {'value': 3, 'serial': 'A', 'run': runs[0]['id']}


def test_station_that_differs_is_named_and_one_that_does_not_is_not(here):
    chance = random.Random(3)
    runs = [run_of(chance.gauss(-68.0 if n % 4 == 3 else -70.0, 0.5), f'U{n}', station=f'bench-{n % 4}') for n in range(200)]
    stations = measured(report(here, runs))['leakage_after']['stations']
    assert [one['station'] for one in stations] == ['bench-3']
    assert stations[0]['values'] == 50 and stations[0]['errors'] > 5
    assert math.isclose(stations[0]['mean_of_others'], -70.0, abs_tol=0.2)


def test_outlier_is_named_with_its_unit_and_run(here):
    chance = random.Random(4)
    runs = [run_of(chance.gauss(-70.0, 0.5), f'U{n}') for n in range(200)] + [run_of(-61.0, 'odd'), run_of(-90.0, 'other')]
    outliers = measured(report(here, runs))['leakage_after']['outliers']
    assert outliers == [{'value': -90, 'serial': 'other', 'run': runs[-1]['id']}, {'value': -61, 'serial': 'odd', 'run': runs[-2]['id']}]


def test_limits_that_changed_are_another_measurement(here):
    runs = [run_of(-70, 'A'), run_of(-70, 'B')]
    runs[1]['measurements'][0]['highest'] = -65.0
    ran = report(here, runs)
    assert [(one['highest'], one['values']) for one in events(ran) if one['event'] == 'report_measurement'] == [(-60, 1), (-65, 1)]


def test_report_is_of_the_runs_that_are_chosen(here):
    runs = [run_of(-70, 'A', '2026-03-01T00:00:00Z'), run_of(-80, 'B', '2026-03-02T00:00:00Z', station='bench-2')]
    assert measured(report(here, runs, '--from', '2026-03-02'))['leakage_after']['mean'] == -80
    assert measured(report(here, runs, '--station', 'bench-1'))['leakage_after']['mean'] == -70


def test_more_runs_than_are_in_memory_at_a_time_all_count(here):
    runs = [run_of(-70 - n, f'U{n % 300}', f'2026-03-01T{n // 3600:02}:{n // 60 % 60:02}:{n % 60:02}Z') for n in range(600)]
    one = measured(report(here, runs))['leakage_after']
    # -70 down to -669; each unit's second run is 300 below its first.
    assert (one['values'], one['most'], one['least']) == (600, -70, -669) and math.isclose(one['mean'], -369.5)
    assert (one['drift']['changes'], one['drift']['mean'], one['drift']['deviation']) == (300, -300, 0)


def test_text_shows_those_with_the_least_room_and_all_when_asked(here):
    runs = []
    for n in range(4):
        run = made_up(serial=f'U{n}', measurements=30)
        for place, one in enumerate(run['measurements']):
            one['value'] = -100.0 + place + 0.5 * n
        runs.append(run)
    report(here, runs)
    few = radioctl(here, 'store', 'report', '--store', STORE).stdout
    assert 'Measurements, the least room first, 20 of 30 (--all shows all)' in few
    rows = re.findall(r'leakage_after at channel 1, (\d+) kHz', few)
    assert rows[:2] == ['18000029', '18000028']
    whole = radioctl(here, 'store', 'report', '--store', STORE, '--all').stdout
    assert '18000000 kHz' in whole and '18000000 kHz' not in few


def test_page_has_plots_and_every_link_leads_to_a_run_on_it(here):
    chance = random.Random(5)
    runs = [run_of(chance.gauss(-70.0, 0.5), f'U{n % 60} <&>', f'2026-03-0{1 + n // 30}T00:00:00Z') for n in range(120)] + [run_of(-61.0, 'odd')]
    report(here, runs, '--html', 'report.html')
    page = (here / 'report.html').read_text()
    assert page.count('<svg role="img"') == 2
    links = set(re.findall(r'href="#(run-[0-9a-f-]+)"', page))
    assert links and all(f'id="{link}"' in page for link in links)
    assert f'run-{runs[-1]["id"]}' in links
    assert '<&>' not in page and re.search(r'U\d+ &lt;&amp;&gt;', page)


def test_report_without_runs_says_so(here):
    assert event(report(here, []), 'reported')['runs'] == 0
    assert radioctl(here, 'store', 'report', '--store', STORE).stdout.startswith('0 runs of 0 units: 0 passed, 0 failed, yield -\n')

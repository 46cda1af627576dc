#!/usr/bin/env python3
"""self_test.py COMPILER: the checks of rooms.py find what is wrong with a make-believe house."""
import os
import subprocess
import sys
import tempfile
import unittest

ROOMS = os.path.join(os.path.dirname(os.path.abspath(__file__)), 'rooms.py')
COMPILER = sys.argv.pop()


class HouseTest(unittest.TestCase):
    """A house in a temporary folder. A test writes its files and its list of rooms."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.project = folder.name

    def write(self, path, text=''):
        path = os.path.join(self.project, path)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, 'w', encoding='utf-8') as file:
            file.write(text)

    def write_rooms(self, *rooms):
        """Each room is its folder, the folders that it knows, and its include directories."""
        def name(folder):
            return folder.replace('/', '_')
        self.write('rooms.txt', ''.join(
            f'{name(folder)}|{folder}|{" ".join(map(name, known))}|'
            f'{" ".join(os.path.join(self.project, directory) for directory in directories)}\n'
            for folder, known, directories in rooms))

    def write_chain(self):
        """The radio knows the board, which knows the words."""
        self.write_rooms(('radio/text', [], []), ('radio/board', ['radio/text'], []),
                         ('radio/session', ['radio/board', 'radio/text'], []))

    def check(self, *arguments):
        """The exit code, and the lines that say what is wrong."""
        ran = subprocess.run([sys.executable, ROOMS, self.project, os.path.join(self.project, 'rooms.txt'),
                              *arguments], text=True, check=False, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.assertEqual(ran.stderr, '')
        return ran.returncode, ran.stdout.splitlines()


class CirclesTest(HouseTest):
    def test_rooms_that_know_one_another_in_one_direction_are_right(self):
        self.write_chain()
        self.assertEqual(self.check('circles'), (0, []))

    def test_circle_is_found_with_each_room_in_it(self):
        self.write_rooms(('radio/text', ['radio/session'], []), ('radio/board', ['radio/text'], []),
                         ('radio/session', ['radio/board'], []), ('radio/plan', ['radio/session'], []))
        self.assertEqual(self.check('circles'), (1, ['radio/text knows itself by way of others',
                                                     'radio/board knows itself by way of others',
                                                     'radio/session knows itself by way of others']))

    def test_room_that_knows_itself_is_a_circle(self):
        self.write_rooms(('radio/text', ['radio/text'], []))
        self.assertEqual(self.check('circles'), (1, ['radio/text knows itself by way of others']))


class PictureTest(HouseTest):
    ARROWS = ['radio/text&#45;&gt;radio/board', 'radio/board&#45;&gt;radio/session']
    HOW = ': cmake --build build/check --target rooms_picture draws it anew (with graphviz)'

    def draw(self, titles):
        """The list of arrows as rooms.py writes it, and a picture with these titles beside the rooms."""
        self.write_chain()
        self.assertEqual(self.check('dot', os.path.join(self.project, 'rooms.dot')), (0, []))
        rooms = ['house', 'radio/text', 'radio/board', 'radio/session']
        self.write('rooms.svg', ''.join(f'<g><title>{title}</title></g>\n' for title in rooms + titles))

    def check_picture(self):
        return self.check('picture', 'rooms.dot', 'rooms.svg')

    def test_picture_of_the_house_as_it_is_is_right(self):
        self.draw(self.ARROWS)
        self.assertEqual(self.check_picture(), (0, []))

    def test_room_that_has_come_is_missed_in_the_list_of_arrows(self):
        self.draw(self.ARROWS)
        self.write_rooms(('radio/text', [], []), ('radio/board', ['radio/text'], []),
                         ('radio/session', ['radio/board'], []), ('radio/plan', [], []))
        self.assertEqual(self.check_picture(), (1, ['rooms.dot is not what the build has now' + self.HOW]))

    def test_arrow_that_has_gone_is_found_in_the_list_of_arrows(self):
        self.draw(self.ARROWS)
        self.write_rooms(('radio/text', [], []), ('radio/board', ['radio/text'], []),
                         ('radio/session', ['radio/text'], []))
        self.assertEqual(self.check_picture(), (1, ['rooms.dot is not what the build has now' + self.HOW]))

    def test_arrow_that_is_missing_in_the_picture_is_found(self):
        self.draw(self.ARROWS[:1])
        self.assertEqual(self.check_picture(),
                         (1, ['rooms.svg shows other rooms or arrows than rooms.dot' + self.HOW]))

    def test_arrow_that_the_picture_has_beside_the_others_is_found(self):
        self.draw(self.ARROWS + ['radio/text&#45;&gt;radio/session'])
        self.assertEqual(self.check_picture(),
                         (1, ['rooms.svg shows other rooms or arrows than rooms.dot' + self.HOW]))


class SpellingTest(HouseTest):
    def setUp(self):
        super().setUp()
        self.write_rooms()
        self.write('PlatformServices/FrequencyHandler/interface/ResultCode.h')
        self.write('PlatformServices/FrequencyHandler/private/FrequencyHandler.h')
        self.write('PlatformServices/FrequencyHandler/private/qm7373/CTxIQImbalanceHandler.h')
        self.write('Platform/contract/OrbiTrace.h')
        os.makedirs(os.path.join(self.project, 'radioctl'))
        self.write('radio/text/Words.h')

    def test_includes_from_the_top_are_right(self):
        self.write('radio/text/Words.cpp', '#include "radio/text/Words.h"\n#include "standalone/Platform.h"\n'
                                           '#include "ResultCode.h"\n#include "OrbiTrace.h"\n'
                                           '#include "FrequencyHandler.h"\n#include "CTxIQImbalanceHandler.h"\n'
                                           '#include <string>\n')
        self.assertEqual(self.check('spelling'), (0, []))

    def test_header_beside_the_source_is_found(self):
        self.write('radio/text/Words.cpp', '#include "radio/text/Words.h"\n\n#include "Words.h"\n')
        self.assertEqual(self.check('spelling'),
                         (1, ['radio/text/Words.cpp:3: "Words.h", expected it from the top']))

    def test_way_up_and_down_again_is_found(self):
        self.write('radioctl/run/Run.h', '  #  include  "../../radio/text/Words.h"\n')
        self.assertEqual(self.check('spelling'),
                         (1, ['radioctl/run/Run.h:1: "../../radio/text/Words.h", expected it from the top']))

    def test_sources_that_the_build_fills_in_are_looked_at(self):
        self.write('radioctl/completion/Script.cpp.in', '#include "Script.h"\n')
        self.assertEqual(self.check('spelling'),
                         (1, ['radioctl/completion/Script.cpp.in:1: "Script.h", expected it from the top']))


class HeadersTest(HouseTest):
    def setUp(self):
        super().setUp()
        for room in ('text', 'board', 'session'):
            self.write(f'radio/{room}/Header.h')
            door = os.path.join(self.project, 'doors', room)
            os.makedirs(os.path.join(door, 'radio'))
            os.symlink(os.path.join(self.project, 'radio', room), os.path.join(door, 'radio', room))

    def write_board(self, *directories):
        """The board knows the words; it is given these directories. The session stands beside it."""
        self.write_rooms(('radio/text', [], []), ('radio/board', ['radio/text'], directories),
                         ('radio/session', [], []))

    def check_board(self):
        return self.check('headers', 'radio_board', COMPILER)

    def test_room_with_doors_to_what_it_knows_is_right(self):
        self.write_board('doors/board', 'doors/text')
        self.assertEqual(self.check_board(), (0, []))

    def test_room_with_one_door_too_many_is_found(self):
        self.write_board('doors/board', 'doors/text', 'doors/session')
        self.assertEqual(self.check_board(),
                         (1, ['radio/board does not know radio/session, but finds radio/session/Header.h']))

    def test_room_that_sees_the_whole_project_is_found(self):
        self.write_board('.')
        self.assertEqual(self.check_board(),
                         (1, ['radio/board does not know radio/session, but finds radio/session/Header.h']))

    def test_room_with_a_door_too_few_is_found(self):
        self.write_board('doors/board')
        self.assertEqual(self.check_board(),
                         (1, ['radio/board knows radio/text, but does not find radio/text/Header.h']))

    def test_room_that_is_known_by_way_of_others_may_be_found(self):
        self.write_rooms(('radio/text', [], []), ('radio/board', ['radio/text'], []),
                         ('radio/session', ['radio/board'], ['doors/session', 'doors/board', 'doors/text']))
        self.assertEqual(self.check('headers', 'radio_session', COMPILER), (0, []))


unittest.main()

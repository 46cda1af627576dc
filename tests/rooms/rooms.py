#!/usr/bin/env python3
"""rooms.py PROJECT LIST COMMAND: looks at the house as the build has it.

LIST has a line for each target: its name, its folder, the targets that it links, and its include directories.

  headers TARGET COMPILER  sources of the target find the headers of what it knows, and of nothing else
  circles                  no room knows itself by way of others
  spelling                 includes say in which room a header lies, and libraries with large headers stay where they are
  dot FILE                 writes the picture for graphviz
  picture DOT SVG          what is kept is what would be drawn now
"""
import html
import os
import re
import subprocess
import sys


# A compiler takes long for the headers of these libraries: who may include them.
LARGE = {
    'asio': ['Platform/devices/ScpiStream.h', 'Platform/devices/ScpiStream.cpp'],
    'CLI': ['radioctl/options/Options.cpp'],
    'Eigen': ['radio/fit/Bowl.cpp', 'radio/fit/Surface.cpp', 'radio/laboratory/UnitFit.cpp'],
    'boost': ['service/http/Server.cpp'],
    'nlohmann': ['radio/files/Json.cpp', 'radio/calibration/SettingsReader.h', 'radio/laboratory/JsonMembers.h', 'radio/store/RunReader.cpp', 'service/radio/Body.cpp'],
    'soci': ['radio/store/Connection.h'],
    'toml++': ['radio/board/TomlItem.h', 'radio/board/TomlText.h'],
}


class Room:
    def __init__(self, line):
        self.name, self.folder, known, directories = line.rstrip('\n').split('|')
        self.known = known.split()
        self.directories = directories.split()


def read_rooms(path):
    with open(path, encoding='utf-8') as file:
        return {room.name: room for room in map(Room, file)}


def reached(rooms, name):
    """All that a room knows, directly or by way of others."""
    found = set()
    waiting = list(rooms[name].known)
    while waiting:
        known = waiting.pop()
        if known not in found:
            found.add(known)
            waiting += rooms[known].known
    return found


def header_of(project, room):
    """A header of a room, as others include it; None where there is none."""
    names = sorted(name for name in os.listdir(os.path.join(project, room.folder)) if name.endswith('.h'))
    if not names:
        return None
    if room.folder.startswith(('radio', 'service')):
        return room.folder + '/' + names[0]
    if room.name == 'standalone_platform':
        return 'standalone/Platform.h'
    if room.name == 'radio_devices':
        return 'devices/Hardware.h'
    if room.name == 'recording_format':
        return 'recording/RecordingFormat.h'
    return names[0]


def includes(compiler, directories, header, *options):
    command = [compiler, '-std=c++17', '-x', 'c++', '-'] + ['-I' + d for d in directories] + list(options)
    ran = subprocess.run(command, input=f'#include "{header}"\n', text=True, cwd='/', check=False,
                         env={**os.environ, 'LC_ALL': 'C'}, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    if ran.returncode == 0:
        return True
    if re.search(re.escape(header) + r"'?:? (No such file|file not found)", ran.stderr):
        return False
    sys.exit(f'{header}: {ran.stderr}')


def check_headers(project, rooms, name, compiler):
    problems = []
    room = rooms[name]
    known = reached(rooms, name) | {name}
    for other in rooms.values():
        header = header_of(project, other)
        if header is None:
            continue
        if other.name in room.known and not includes(compiler, room.directories, header, '-E'):
            problems.append(f'{room.folder} knows {other.folder}, but does not find {header}')
        if other.name not in known and includes(compiler, room.directories, header, '-fsyntax-only'):
            problems.append(f'{room.folder} does not know {other.folder}, but finds {header}')
    return problems


def check_circles(rooms):
    return [f'{room.folder} knows itself by way of others' for room in rooms.values()
            if room.name in reached(rooms, room.name)]


def check_spelling(project):
    plain = {name for folder in ('PlatformServices/FrequencyHandler/interface', 'Platform/contract',
                                 'PlatformServices/FrequencyHandler/private',
                                 'PlatformServices/FrequencyHandler/private/qm7373')
             for name in os.listdir(os.path.join(project, folder)) if name.endswith('.h')}
    problems = []
    for top in ('Platform/standalone', 'Platform/devices', 'radio', 'service', 'radioctl'):
        for folder, _, names in os.walk(os.path.join(project, top)):
            for name in sorted(n for n in names if n.endswith(('.h', '.cpp', '.in'))):
                path = os.path.relpath(os.path.join(folder, name), project)
                with open(os.path.join(project, path), encoding='utf-8') as file:
                    for number, line in enumerate(file, 1):
                        large = re.match(r'\s*#\s*include\s*<(CLI|Eigen|asio|boost|nlohmann|soci|toml\+\+)/', line)
                        if large and path not in LARGE[large[1]]:
                            problems.append(f'{path}:{number}: <{large[1]}/...>, expected it in {" or ".join(LARGE[large[1]])}')
                        match = re.match(r'\s*#\s*include\s*"([^"]+)"', line)
                        if match and not match[1].startswith(('radio/', 'service/', 'radioctl/', 'standalone/', 'devices/',
                                                                 'recording/')) \
                                and match[1] not in plain:
                            problems.append(f'{path}:{number}: "{match[1]}", expected it from the top')
    return problems


def graph(rooms):
    """Nodes and arrows; the arrows point from what is known to who knows it."""
    nodes = {room.folder for room in rooms.values()}
    arrows = {(rooms[known].folder, room.folder) for room in rooms.values() for known in room.known}
    # An arrow that others make anyway is not drawn.
    drawn = {(a, b) for a, b in arrows
             if not any((a, c) in closure(arrows) and (c, b) in closure(arrows) for c in nodes - {a, b})}
    return nodes, drawn


def closure(arrows, cache={}):
    key = frozenset(arrows)
    if key not in cache:
        whole = set(arrows)
        while True:
            more = {(a, d) for a, b in whole for c, d in arrows if b == c} - whole
            if not more:
                break
            whole |= more
        cache[key] = whole
    return cache[key]


def dot(rooms):
    nodes, arrows = graph(rooms)
    lines = ['digraph house {', '    rankdir=BT;', '    node [shape=box, style="rounded,filled", fillcolor="#f5f7fa",',
             '          color="#51606f", fontname="sans-serif", fontsize=12];', '    edge [color="#51606f"];']
    lines += [f'    "{node}";' for node in sorted(nodes)]
    lines += [f'    "{a}" -> "{b}";' for a, b in sorted(arrows)]
    return '\n'.join(lines + ['}', ''])


def check_picture(project, rooms, dot_file, svg_file):
    how = 'cmake --build build/check --target rooms_picture draws it anew (with graphviz)'
    with open(os.path.join(project, dot_file), encoding='utf-8') as file:
        if file.read() != dot(rooms):
            return [f'{dot_file} is not what the build has now: {how}']
    with open(os.path.join(project, svg_file), encoding='utf-8') as file:
        titles = {html.unescape(title) for title in re.findall('<title>(.*?)</title>', file.read())} - {'house'}
    nodes, arrows = graph(rooms)
    if titles != nodes | {f'{a}->{b}' for a, b in arrows}:
        return [f'{svg_file} shows other rooms or arrows than {dot_file}: {how}']
    return []


def main():
    project, listed, command, *arguments = sys.argv[1:]
    rooms = read_rooms(listed)
    if command == 'dot':
        with open(arguments[0], 'w', encoding='utf-8') as file:
            file.write(dot(rooms))
        return
    checks = {'headers': lambda: check_headers(project, rooms, *arguments), 'circles': lambda: check_circles(rooms),
              'spelling': lambda: check_spelling(project), 'picture': lambda: check_picture(project, rooms, *arguments)}
    problems = checks[command]()
    for problem in problems:
        print(problem)
    sys.exit(bool(problems))


main()

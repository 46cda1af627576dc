#!/bin/sh
# doors.sh SOURCES: of the stand-alone platform's sources only Platform.cpp and the doors know Platform, and nobody
# includes a door.
set -eu
cd "$1"

circles=$(grep -l '^#include ".*\<Platform\.h"' ./*.h ./*.cpp | grep -vx './Platform\.cpp' || true)
if [ -n "$circles" ]; then
    echo "These are behind the doors and include Platform.h, which includes them: $circles"
    exit 1
fi
doors=$(grep -l '^#include ".*doors/' ./*.h ./*.cpp doors/* || true)
if [ -n "$doors" ]; then
    echo "These include a door: $doors"
    exit 1
fi
# The search finds what it looks for.
grep -q '^#include ".*\<Platform\.h"' Platform.cpp
grep -q '^#include ".*\<Platform\.h"' doors/BrokerDoors.cpp

#!/usr/bin/env bash
# Builds the program qxevolve and lets it find Kepler's third law in a table of the planets.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-tools.sh g++ cmake ninja-build libpugixml-dev libcli11-dev libfmt-dev gnuplot-nox graphviz

echo "Building qxevolve ..."
cmake -S . -B build/demo -G Ninja -DCMAKE_BUILD_TYPE=Release -DQX_BUILD_TESTS=OFF -DQX_BUILD_EXAMPLES=OFF >/dev/null
cmake --build build/demo | tail -n 1

echo
echo "How long is a planet's year, by its distance from the sun? Eight rows of a table:"
cat examples/regression/planets.csv
echo
build/demo/apps/qxevolve/qxevolve regress examples/regression/planets.csv --target period --ignore planet \
  --seconds 10 --save build/demo/kepler.xml --report build/demo/report
echo
echo "Open build/demo/report/report.html in a browser. Another table: build/demo/apps/qxevolve/qxevolve --help"

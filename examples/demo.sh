#!/usr/bin/env bash
# Runs the example commands on the shipped tables: reports on the terminal and in demo-out/.
set -euo pipefail
cd "$(dirname "$0")/.."
predselect=build/bin/predselect
out=demo-out
mkdir -p "$out"

run() {
    printf '\n$ predselect'
    printf ' %s' "$@"
    printf '\n\n'
    "$predselect" "$@"
}

run describe data/penguins.csv
run run examples/penguins.pred --data data/penguins.csv \
    --html "$out/penguins.html" --json "$out/penguins.json"
run run examples/churn.pred --data data/churn.csv \
    --html "$out/churn.html" --json "$out/churn.json" --chart "$out/churn.svg" --vega "$out/churn.vl.json"

printf '\nThe same reports as pages, JSON and pictures are in %s/:\n' "$out"
ls "$out"

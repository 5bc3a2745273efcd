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

# The classifier: its search, its table of hits and misses, the scored data and the model.
run bayes --data data/penguins.csv --target species \
    --pmml "$out/penguins.pmml" --state "$out/penguins.state" --save "$out/penguins-scored.csv"
run run examples/classify.pred --data data/churn.csv \
    --html "$out/classify.html" --json "$out/classify.json" --save "$out/churn-scored.csv"
run score --model "$out/penguins.state" --data data/penguins.csv --save "$out/penguins-again.csv"

printf '\nThe same reports as pages, JSON and pictures are in %s/:\n' "$out"
ls "$out"

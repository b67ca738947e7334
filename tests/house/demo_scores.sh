#!/bin/sh
# The demo scores are what their texts say: demo_scores.sh MAKE_DEMO_SCORES DEMO
made=$(mktemp -d) || exit 1
trap 'rm -rf "$made"' EXIT
"$1" "$2/scores" "$made" || exit 1
for score in "$made"/*.stv; do
  cmp "$score" "$2/${score##*/}" || exit 1
done

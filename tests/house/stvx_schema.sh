#!/bin/sh
# StvXML as it is written is valid by its schema: stvx_schema.sh TS5_BATCH SOURCE_DIRECTORY
command -v xmllint >/dev/null || { echo "xmllint (package libxml2-utils) is missing"; exit 77; }
made=$(mktemp -d) || exit 1
trap 'rm -rf "$made"' EXIT
STAVORA_REGISTRY=$made/registry.sqlite
export STAVORA_REGISTRY
for score in "$2"/tests/data/musicxml/* "$2"/demo/*.stv; do
  name=$made/$(basename "$score").stvx
  "$1" run XmlConverter --quiet --dest "$name" "$score" >"$made/log" || { cat "$made/log"; exit 1; }
done
xmllint --noout --schema "$2/docs/stvx.xsd" "$made"/*.stvx 2>"$made/log" || { grep -v " validates$" "$made/log"; exit 1; }

#!/usr/bin/env bash
# Fetches anew the libraries that pages carry in them (easy/zelvan_easy/page), at the versions that the package names.
set -euo pipefail
cd "$(dirname "$0")/../easy/zelvan_easy/page"
version=$(sed -n 's/.*("tablesort", "\([0-9.]*\)".*/\1/p' __init__.py)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
npm install --silent --no-save --no-audit --no-fund --prefix "$work" "tablesort@$version"
cp "$work/node_modules/tablesort/dist/tablesort.min.js" tablesort.min.js
cp "$work/node_modules/tablesort/LICENCE" tablesort.LICENSE

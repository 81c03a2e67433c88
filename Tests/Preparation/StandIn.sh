#!/bin/sh
# Stands beside PreparerTests under the names of the tools and becomes the script that the test wrote.
exec /bin/sh "$VELMORA_STAND_INS/${0##*/}" "$@"

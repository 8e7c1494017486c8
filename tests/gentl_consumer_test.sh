#!/usr/bin/env bash
# Runs the consumer that others wrote, in a virtual environment of its own that is made at the first run.
# Usage: gentl_consumer_test.sh FOLDER ARGUMENTS of gentl_consumer.py... Exit status 77: skipped, with one sentence why.
set -euo pipefail
environment=$1/consumer
here=$(dirname "$0")
if [ -n "${MAROVINE_NO_CONSUMER:-}" ]; then
    echo "skipped: MAROVINE_NO_CONSUMER keeps the consumer's packages from being fetched"
    exit 77
fi
if ! [ -e "$environment/ready" ]; then
    { python3 -m venv --clear "$environment" &&
        "$environment/bin/pip" install --quiet --disable-pip-version-check harvesters==1.4.3 genicam==1.6.0; } || {
        echo "skipped: the packages harvesters and genicam could not be fetched from PyPI into $environment"
        exit 77
    }
    touch "$environment/ready"
fi
exec timeout 600 "$environment/bin/python" "$here/gentl_consumer.py" "${@:2}"

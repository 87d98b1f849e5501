#!/usr/bin/env bash
# Puts single faults into the code and tells which of them no test notices: scripts/mutate.sh [ROOM...]; --help tells more.
set -euo pipefail
# shellcheck source=scripts/bootstrap.sh
. "$(dirname "${BASH_SOURCE[0]}")/bootstrap.sh"

install_packages "build tests tools convert render window"
exec nice -n "${MUTATE_NICE:-19}" python3 "$root/scripts/mutate.py" "$@"

#!/usr/bin/env bash
# Builds corpus/samples/ from the recipes in corpus/recipes/.
# Installs the tools the fetcher needs, then hands over to fetch.py.
# Usage: bash corpus/fetch.sh [--only LANG]... [-j N] [--keep]
set -euo pipefail

here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"

need=()
command -v python3 >/dev/null 2>&1 || need+=(python3)
command -v npm >/dev/null 2>&1 || need+=(npm)
command -v dpkg-source >/dev/null 2>&1 || need+=(dpkg-dev)
command -v xz >/dev/null 2>&1 || need+=(xz-utils)
command -v git >/dev/null 2>&1 || need+=(git)  # git sources clone when no local copy exists
[ -e /etc/ssl/certs/ca-certificates.crt ] || need+=(ca-certificates)

# Package lists are missing on a fresh machine and stale after a day.
lists_fresh() {
  find /var/lib/apt/lists -maxdepth 1 -name '*_Packages*' -mmin -1440 2>/dev/null | grep -q .
}

if [ ${#need[@]} -gt 0 ] || ! lists_fresh; then
  if [ "$(id -u)" -ne 0 ]; then
    if [ ${#need[@]} -gt 0 ]; then
      echo "fetch.sh: missing tools: ${need[*]} (run as root to install them)" >&2
      exit 1
    fi
  else
    export DEBIAN_FRONTEND=noninteractive
    apt-get update -qq || echo "fetch.sh: warning: apt-get update failed" >&2
    if [ ${#need[@]} -gt 0 ]; then
      apt-get install -y -qq --no-install-recommends "${need[@]}" >/dev/null
    fi
  fi
fi

exec python3 "$here/fetch.py" "$@"

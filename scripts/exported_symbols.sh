#!/usr/bin/env bash
# Counts what a shared build of the core exports (nm -D --defined-only), by kind: the scrivlet
# namespace's host API and internals, the engine's Qn classes, instantiations of the standard library,
# qpdf's inline members, and anything else. Nothing limits the exports yet: this is the figure to
# bring down to the stable API.
# Usage: scripts/exported_symbols.sh [library, default build-shared/libscrivlet.so]
set -euo pipefail
library=${1:-build-shared/libscrivlet.so}
nm -D --defined-only --demangle "$library" | awk '$2 ~ /^[TtWwVvDdBbRrUu]$/ { $1 = ""; $2 = ""; sub(/^  /, ""); print }' |
  awk '
    /^(typeinfo|vtable|VTT|construction vtable|guard variable) for / { sub(/^[a-zA-Z ]+ for /, "") }
    /^std::|^void std::|^__gnu_cxx/ || /^[^(]*std::/ && !/^scrivlet::/ { std++; next }
    /^scrivlet::Qn|^scrivlet::.*::Qn/ { engine++; next }
    /^scrivlet::/ { host++; next }
    /^(QPDF|qpdf|QUtil|Pl_|Buffer|Pipeline|InputSource)/ { third++; next }
    { other++ }
    END {
      printf "exported: %d (scrivlet host and internals %d, engine Qn classes %d, standard library %d, qpdf %d, other %d)\n",
             host + engine + std + third + other, host, engine, std, third, other
    }'

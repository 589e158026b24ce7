#!/usr/bin/env bash
# Checks what a shared build exports (nm -D --defined-only). libscrivlet.so, the stable host API, must
# export only names of the scrivlet namespace outside the engine: no engine (Qn) class, no
# instantiation of the standard library, nothing of qpdf or another library. The engine's library
# promises no ABI: its count is printed, by kind, for information.
# Usage: scripts/exported_symbols.sh [build folder, default build-shared]
set -euo pipefail
build=${1:-build-shared}
exported() {  # library: one demangled name a line
  nm -D --defined-only --demangle "$1" | awk '$2 ~ /^[TtWwVvDdBbRrUu]$/ { $1 = ""; $2 = ""; sub(/^  /, ""); print }' |
    sed -E 's/^(typeinfo name|typeinfo|vtable|VTT|construction vtable|guard variable) for //; s/@@?SCRIVLET_[0-9]+$//'
}
kinds() {  # names in, a line of counts out
  awk '
    /^std::|^void std::|^__gnu_cxx/ || /^[^(]*std::/ && !/^scrivlet::/ { std++; next }
    /^scrivlet::Qn|^scrivlet::[^(]*::Qn/ { engine++; next }
    /^scrivlet::/ { host++; next }
    /^(QPDF|qpdf|QUtil|Pl_|Buffer|Pipeline|InputSource)/ { third++; next }
    { other++ }
    END { printf "%d (scrivlet %d, engine Qn classes %d, standard library %d, qpdf %d, other %d)\n",
                 host + engine + std + third + other, host, engine, std, third, other }'
}
stable=$(exported "$build/libscrivlet.so")
echo "libscrivlet.so exports $(kinds <<<"$stable")"
echo "libscrivlet-engine.so exports $(exported "$build/libscrivlet-engine.so" | kinds) (no ABI promise)"
outside=$(grep -vE '^scrivlet::' <<<"$stable" || true)
outside+=$(grep -E '^scrivlet::(Qn|[^(]*::Qn)|^scrivlet::[^(]*::State::' <<<"$stable" || true)
if [ -n "$outside" ]; then
  echo "libscrivlet.so exports names outside the stable API:" >&2
  echo "$outside" >&2
  exit 1
fi

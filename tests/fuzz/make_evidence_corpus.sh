#!/usr/bin/env bash
# Makes the evidence fuzzer's seeds with the scrivlet tool and the fuzzing identities of
# fuzz_identities.h: a sealed file that verifies (for verifying and opening), a signed PDF that
# verifies, and seeds for values of the wrong type. The first byte of each seed picks the reader.
# Usage: make_evidence_corpus.sh TOOL
set -euo pipefail
tool=$(realpath "$1")
here=$(cd "$(dirname "$0")" && pwd)
corpus="$here/corpus_evidence"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
for name in kRoot kSigner kSignerKey kExaminer; do
  sed -n "/inline const char $name\[\] = R\"(/,/)\";/p" "$here/fuzz_identities.h" | sed 's/.*R"(//; s/)";//' >"$name.pem"
done
tail -c +2 "$corpus/record" >record.json
printf '%%PDF-1.4 fuzzing document\n%%%%EOF\n' >document.txt
"$tool" seal --record record.json --document document.txt --examiner kExaminer.pem \
  --signer-cert kSigner.pem --signer-key kSignerKey.pem -o sealed >/dev/null
{ printf '\0'; cat sealed; } >"$corpus/sealed_verify"
{ printf '\1'; cat sealed; } >"$corpus/sealed_open"
tail -c +2 "$corpus/pdf" >plain.pdf
"$tool" seal --record record.json --document plain.pdf --examiner kExaminer.pem -o plain.sealed >/dev/null
"$tool" sign --document plain.pdf --evidence plain.sealed --signer-cert kSigner.pem --signer-key kSignerKey.pem \
  --rect 10,10,100,40 -o signed.pdf >/dev/null
{ printf '\3'; cat signed.pdf; } >"$corpus/signed_pdf"
{ printf '\203'; cat plain.pdf; } >"$corpus/pdf_to_sign"
printf '\4\0\3\5' >"$corpus/wrong_type_sealed"
printf '\4\1\2\4\1\3' >"$corpus/wrong_type_manifest"
printf '\4\2\6\2' >"$corpus/wrong_type_record"
"$tool" verify --trust kRoot.pem --evidence sealed document.txt >/dev/null
"$tool" verify --trust kRoot.pem signed.pdf >/dev/null

#!/usr/bin/env bash
# The scrivlet tool as a server's script uses it: strokes drawn into a record file, the record sealed
# with a two-page PDF for an examiner, stamped into the PDF, verified (a stamped PDF alone, and a changed
# one), opened with the examiner's key, and a batch drawn in parallel. Usage: scrivlet_tool_test.sh TOOL
set -euo pipefail
tool=$(realpath "$1")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
fail() { echo "FAILED: $*" >&2; exit 1; }
expect_failure() {  # exit status not 0, and one line on standard error
  local errors
  if "$@" >/dev/null 2>errors.txt; then fail "$* succeeded"; fi
  errors=$(wc -l <errors.txt)
  [ "$errors" -eq 1 ] || fail "$* said $errors lines on standard error: $(cat errors.txt)"
}

openssl req -x509 -newkey rsa:3072 -nodes -days 30 -subj /CN=Examiner -keyout examiner.key -out examiner.pem 2>/dev/null
openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 30 -subj /CN=Tablet-App \
  -keyout app.key -out app.pem 2>/dev/null

# Two strokes, written as the library writes strokes, so that opening gives back the same bytes.
point() {  # x y t id
  printf '{"altitude":1.5707963705062866,"ax":0.0,"ay":0.0,"azimuth":0.0,"diameter":3.0,"id":%s,"pressure":0.5,"t":%s,"vx":0.0,"vy":0.0,"x":%s,"y":%s}' "$4" "$3" "$1" "$2"
}
{
  printf '{"format":"scrivlet-strokes","strokes":[['
  printf '%s,%s,%s' "$(point 20.0 40.0 0.0 100)" "$(point 80.0 10.0 0.05 101)" "$(point 140.0 45.0 0.1 102)"
  printf '],['
  printf '%s,%s' "$(point 30.0 60.0 0.4 103)" "$(point 150.0 60.0 0.5 104)"
  printf ']],"version":1}'
} >strokes.json

for command in render seal verify open stamp; do
  "$tool" "$command" --help | grep -q "^usage: scrivlet $command" || fail "$command --help"
done
"$tool" --help | grep -q '^usage: scrivlet COMMAND' || fail "--help"
expect_failure "$tool" frobnicate
expect_failure "$tool" render
expect_failure "$tool" render strokes.json --formats gif
expect_failure "$tool" render no-such-file.json
sed 's/"diameter":3.0/"diameter":0.0/g' strokes.json >inkless.json  # nothing to see: not a blank picture
expect_failure "$tool" render inkless.json --out-dir inkless
[ ! -e inkless/inkless.png ] || fail "a picture of strokes without ink"
expect_failure "$tool" seal --record strokes.json --document strokes.json --examiner examiner.pem -o x.sealed
expect_failure "$tool" stamp --document strokes.json --evidence strokes.json --rect 1,2,3 -o x.pdf
expect_failure "$tool" verify --evidence garbage.sealed strokes.json

# Drawing: every format, the record file among them.
"$tool" render strokes.json --out-dir drawn --formats png,pdf,svg,xml,json --scale 2 --hash --date-time >/dev/null
head -c 8 drawn/strokes.png | od -An -tx1 | grep -q '89 50 4e 47 0d 0a 1a 0a' || fail "PNG signature"
qpdf --check drawn/strokes.pdf >/dev/null || fail "qpdf --check of the drawn PDF"
xmllint --noout drawn/strokes.svg drawn/strokes.xml || fail "SVG and XML well-formed"
[ "$(grep -o '<sig:SamplePoint>' drawn/strokes.xml | wc -l)" -eq 5 ] || fail "one sample per point"

# The document: two pages.
qpdf --empty --pages drawn/strokes.pdf drawn/strokes.pdf -- contract.pdf
"$tool" seal --record drawn/strokes.json --document contract.pdf --examiner examiner.pem \
  --signer-cert app.pem --signer-key app.key -o contract.sealed >/dev/null
grep -q '"x"' contract.sealed && fail "plaintext strokes in the sealed file"
"$tool" stamp --document contract.pdf --evidence contract.sealed --page 2 --rect 40,30,120,50 -o signed.pdf >/dev/null
qpdf --check signed.pdf >/dev/null || fail "qpdf --check of the stamped PDF"
cmp -n "$(stat -c %s contract.pdf)" contract.pdf signed.pdf || fail "the stamped PDF does not begin with the document"
expect_failure "$tool" stamp --document signed.pdf --evidence contract.sealed --rect 1,2,3,4 -o again.pdf
expect_failure "$tool" stamp --document contract.pdf --evidence contract.sealed --page 3 --rect 1,2,3,4 -o x.pdf

# Verifying: the stamped PDF alone, the sealed file beside either PDF, trust required, then changes.
"$tool" verify signed.pdf >verify.txt || fail "the stamped PDF does not verify: $(cat verify.txt)"
grep -q '^signed.pdf: valid$' verify.txt || fail "verify says: $(cat verify.txt)"
grep -q 'manifest signature: passed: valid, by /CN=Tablet-App' verify.txt || fail "signer: $(cat verify.txt)"
grep -q "document: passed: the document's first $(stat -c %s contract.pdf) bytes are the one signed; .* in 1 revision were added" \
  verify.txt || fail "document check: $(cat verify.txt)"
"$tool" verify --evidence contract.sealed contract.pdf >/dev/null || fail "the document does not verify"
"$tool" verify --evidence contract.sealed signed.pdf >/dev/null || fail "the stamped PDF with its evidence"
"$tool" verify --trust app.pem --require-signature signed.pdf >/dev/null || fail "trusted signer"
if "$tool" verify --trust examiner.pem signed.pdf >verify.txt; then fail "an untrusted signer verified"; fi
grep -q 'manifest signature: FAILED' verify.txt || fail "untrusted signer: $(cat verify.txt)"
# One byte of the signed revision changed: the document check fails, and only it.
cp signed.pdf changed.pdf
printf 'X' | dd of=changed.pdf bs=1 seek=20 conv=notrunc 2>/dev/null
if "$tool" verify changed.pdf >verify.txt; then fail "a changed PDF verified"; fi
[ "$(grep -c FAILED verify.txt)" -eq 1 ] && grep -q 'document: FAILED' verify.txt || fail "changed: $(cat verify.txt)"

# Opening: the strokes come back to the byte, and the signature is drawn again.
"$tool" open --evidence signed.pdf --key examiner.key --out-dir opened >/dev/null
cmp opened/strokes.json strokes.json || fail "the opened strokes differ from those signed"
cmp opened/sealed-image.png drawn/strokes.png || fail "the sealed image differs from the record's"
qpdf --check opened/signature.pdf >/dev/null || fail "qpdf --check of the redrawn PDF"
xmllint --noout opened/signature.svg opened/signature.xml
expect_failure "$tool" open --evidence contract.sealed --key app.key --out-dir wrong

# A batch: three inputs drawn by two workers, with the progress on standard error.
cp strokes.json a.json && cp strokes.json b.json && cp drawn/strokes.xml c.xml
"$tool" render a.json b.json c.xml --out-dir batch --formats png,svg -j 2 2>progress.txt
[ "$(grep -c '^\[[1-3]/3\] .*: ok$' progress.txt)" -eq 3 ] || fail "progress: $(cat progress.txt)"
ls batch/a.png batch/b.svg batch/c.png >/dev/null
if "$tool" render a.json missing.json --out-dir batch 2>progress.txt; then fail "a batch with a missing input"; fi
grep -q 'missing.json: failed' progress.txt || fail "batch failure: $(cat progress.txt)"
echo "scrivlet tool: every command behaved"

#!/usr/bin/env bash
# The scrivlet tool as a server's script uses it: a record sealed with a two-page PDF for an examiner,
# the PDF signed with it through an intermediate CA, verified (trusted, untrusted, changed after
# signing, tampered, unsigned, unreadable; lines and JSON) with each verdict's exit status, opened
# with the examiner's key, and the files it never writes over or leaves readable; a batch drawn in
# parallel. Usage: scrivlet_tool_test.sh TOOL
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
expect_status() {  # status command...: the exit status is exactly that
  local want=$1 got=0
  shift
  "$@" >out.txt 2>&1 || got=$?
  [ "$got" -eq "$want" ] || fail "$* exited $got, not $want: $(cat out.txt)"
}

# A root, an intermediate and the tablet application's signing certificate under it; an examiner.
cat >ext.cnf <<'EOF'
[ca]
basicConstraints=critical,CA:true
keyUsage=critical,keyCertSign,cRLSign
[signer]
basicConstraints=CA:false
keyUsage=critical,digitalSignature,nonRepudiation
extendedKeyUsage=emailProtection
EOF
quiet() { "$@" 2>/dev/null >/dev/null; }
quiet openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 30 -subj /CN=Root \
  -keyout root.key -out root.pem -addext basicConstraints=critical,CA:true -addext keyUsage=critical,keyCertSign
quiet openssl req -new -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -subj /CN=Intermediate -keyout ca.key -out ca.csr
quiet openssl x509 -req -in ca.csr -CA root.pem -CAkey root.key -CAcreateserial -days 30 -extfile ext.cnf -extensions ca -out ca.pem
quiet openssl req -new -newkey rsa:2048 -nodes -subj /CN=Tablet-App -keyout app.key -out app.csr
quiet openssl x509 -req -in app.csr -CA ca.pem -CAkey ca.key -CAcreateserial -days 30 -extfile ext.cnf -extensions signer -out app.pem
quiet openssl req -x509 -newkey rsa:3072 -nodes -days 30 -subj /CN=Examiner -keyout examiner.key -out examiner.pem

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

for command in render seal sign verify open; do
  "$tool" "$command" --help | grep -q "^usage: scrivlet $command" || fail "$command --help"
done
"$tool" --help | grep -q '^usage: scrivlet COMMAND' || fail "--help"
expect_failure "$tool" frobnicate
expect_failure "$tool" render strokes.json --formats gif
expect_failure "$tool" render no-such-file.json
sed 's/"diameter":3.0/"diameter":0.0/g' strokes.json >inkless.json  # nothing to see: not a blank picture
expect_failure "$tool" render inkless.json --out-dir inkless
[ ! -e inkless/inkless.png ] || fail "a picture of strokes without ink"
expect_failure "$tool" seal --record strokes.json --document strokes.json --examiner examiner.pem -o x.sealed
expect_failure "$tool" sign --document strokes.json --evidence strokes.json --rect 1,2,3 -o x.pdf

# Drawing: every format, the record file among them; the document has two pages.
"$tool" render strokes.json --out-dir drawn --formats png,pdf,svg,xml,json --scale 2 --hash --date-time >/dev/null
qpdf --check drawn/strokes.pdf >/dev/null || fail "qpdf --check of the drawn PDF"
xmllint --noout drawn/strokes.svg drawn/strokes.xml || fail "SVG and XML well-formed"
qpdf --empty --pages drawn/strokes.pdf drawn/strokes.pdf -- contract.pdf
cp contract.pdf original.pdf

# Sealing and signing; neither writes over an input, and sizes are checked before reading.
expect_failure "$tool" seal --record drawn/strokes.json --document contract.pdf --examiner examiner.pem -o contract.pdf
cmp contract.pdf original.pdf || fail "seal -o wrote over the document"
"$tool" seal --record drawn/strokes.json --document contract.pdf --examiner examiner.pem -o contract.sealed >/dev/null
grep -q '"x"' contract.sealed && fail "plaintext strokes in the sealed file"
sign=("$tool" sign --document contract.pdf --evidence contract.sealed --signer-cert app.pem --signer-key app.key
  --chain ca.pem --rect 40,30,120,50 --name "Ada Lovelace" --date --hash)
expect_failure "${sign[@]}" -o contract.pdf
cmp contract.pdf original.pdf || fail "sign -o wrote over the document"
expect_failure "${sign[@]}" --page -1 -o x.pdf
grep -q -- '--page takes a page number from 1' errors.txt || fail "page -1: $(cat errors.txt)"
"${sign[@]}" --page 2 -o signed.pdf >/dev/null
truncate -s 600M huge.pdf
expect_failure "$tool" verify huge.pdf
grep -q 'larger than 512 MiB: refused unread' errors.txt || fail "huge input: $(cat errors.txt)"
qpdf --check signed.pdf >/dev/null || fail "qpdf --check of the signed PDF"
pdfsig signed.pdf >pdfsig.txt
grep -q 'Signature is Valid.' pdfsig.txt && grep -q 'Total document signed' pdfsig.txt || fail "pdfsig: $(cat pdfsig.txt)"

# Verifying: each verdict and its exit status.
expect_status 0 "$tool" verify --trust root.pem signed.pdf
grep -q '^signed.pdf: valid$' out.txt || fail "verify says: $(cat out.txt)"
grep -q 'signature Signature1: valid, by /CN=Tablet-App' out.txt || fail "signer: $(cat out.txt)"
expect_status 5 "$tool" verify signed.pdf  # no trust given: untrusted
expect_status 5 "$tool" verify --trust examiner.pem signed.pdf
expect_status 4 "$tool" verify --trust root.pem contract.pdf
expect_status 3 "$tool" verify --trust root.pem strokes.json
cp signed.pdf changed.pdf
printf 'X' | dd of=changed.pdf bs=1 seek=20 conv=notrunc 2>/dev/null
expect_status 7 "$tool" verify --trust root.pem changed.pdf
grep -q 'NOT VALID: tampered' out.txt || fail "tampered: $(cat out.txt)"
# A revision that paints over page 1 after signing.
python3 - signed.pdf painted.pdf <<'EOF'
import re, subprocess, sys
data = open(sys.argv[1], 'rb').read()
number, generation = subprocess.check_output(['qpdf', '--show-pages', sys.argv[1]]).split(b'\n')[0].split(b': ')[1].split()[:2]
page = subprocess.check_output(['qpdf', '--show-object=' + number.decode(), sys.argv[1]]).strip()
size = int(re.findall(rb'/Size (\d+)', data)[-1])
previous = int(re.findall(rb'startxref\s+(\d+)', data)[-1])
root = re.findall(rb'/Root (\d+ \d+ R)', data)[-1]
paint = b'q 1 0 0 rg 20 20 150 40 re f Q'
page = re.sub(rb'/Contents (\[[^\]]*\]|\d+ \d+ R)', lambda m: b'/Contents [' + m.group(1).strip(b'[] ') + b' %d 0 R]' % size, page)
out = bytearray(data)
stream_at = len(out)
out += b'%d 0 obj\n<< /Length %d >>\nstream\n%s\nendstream\nendobj\n' % (size, len(paint), paint)
page_at = len(out)
out += number + b' ' + generation + b' obj\n' + page + b'\nendobj\n'
xref_at = len(out)
out += b'xref\n%s 1\n%010d %05d n\r\n%d 1\n%010d 00000 n\r\n' % (number, page_at, int(generation), size, stream_at)
out += b'trailer\n<< /Size %d /Root %s /Prev %d >>\nstartxref\n%d\n%%%%EOF\n' % (size + 1, root, previous, xref_at)
open(sys.argv[2], 'wb').write(out)
EOF
qpdf --check painted.pdf >/dev/null || fail "qpdf --check of the painted PDF"
pdfsig painted.pdf >pdfsig.txt
grep -q 'Total document signed' pdfsig.txt && fail "pdfsig says the painted PDF is wholly signed"
expect_status 6 "$tool" verify --trust root.pem painted.pdf
grep -q 'NOT VALID: modified after signing' out.txt || fail "painted: $(cat out.txt)"
expect_status 0 "$tool" verify --trust root.pem --allow-later-changes painted.pdf
expect_status 6 "$tool" verify --trust root.pem --json signed.pdf painted.pdf -j 2
python3 -c '
import json, sys
text, reports, at = open("out.txt").read(), [], 0
while (at := text.find("{", at)) >= 0:
    report, at = json.JSONDecoder().raw_decode(text, at)
    reports.append(report)
verdicts = sorted((r["file"], r["verification"]["verdict"]) for r in reports)
assert verdicts == [("painted.pdf", "modified after signing"), ("signed.pdf", "valid")], verdicts
' || fail "JSON reports: $(cat out.txt)"

# A sealed file beside its document: exactly that document, with a signed manifest.
"$tool" seal --record drawn/strokes.json --document contract.pdf --examiner examiner.pem \
  --signer-cert app.pem --signer-key app.key --chain ca.pem -o signed-manifest.sealed >/dev/null
expect_status 0 "$tool" verify --trust root.pem --evidence signed-manifest.sealed contract.pdf
cp contract.pdf extended.pdf && echo "Correction: I owe you EUR 50,000" >>extended.pdf
expect_status 7 "$tool" verify --trust root.pem --evidence signed-manifest.sealed extended.pdf
expect_status 4 "$tool" verify --trust root.pem --evidence contract.sealed contract.pdf

# Opening verifies first; the plaintext files are the owner's alone, and all or none are left.
expect_failure "$tool" open --evidence signed.pdf --key examiner.key --out-dir refused
[ ! -e refused/strokes.json ] || fail "open wrote strokes of evidence it did not trust"
"$tool" open --evidence signed.pdf --key examiner.key --trust root.pem --out-dir opened >/dev/null
cmp opened/strokes.json strokes.json || fail "the opened strokes differ from those signed"
cmp opened/sealed-image.png drawn/strokes.png || fail "the sealed image differs from the record's"
[ "$(stat -c %a opened/strokes.json opened/record.json | sort -u)" = 600 ] || fail "plaintext readable by others"
qpdf --check opened/signature.pdf >/dev/null || fail "qpdf --check of the redrawn PDF"
mkdir -p blocked/record.json  # a folder where a file must go: that write fails
expect_failure "$tool" open --evidence signed.pdf --key examiner.key --trust root.pem --out-dir blocked
[ ! -e blocked/strokes.json ] || fail "open left plaintext strokes behind after a failed write"
expect_failure "$tool" open --evidence signed.pdf --key app.key --trust root.pem --out-dir wrong

# A batch: three inputs drawn by two workers; two inputs of one name in different folders are refused.
mkdir -p a b && cp strokes.json a/x.json && cp strokes.json b/x.json && cp strokes.json b.json && cp drawn/strokes.xml c.xml
"$tool" render a/x.json b.json c.xml --out-dir batch --formats png,svg -j 2 2>progress.txt
[ "$(grep -c '^\[[1-3]/3\] .*: ok$' progress.txt)" -eq 3 ] || fail "progress: $(cat progress.txt)"
ls batch/x.png batch/b.svg batch/c.png >/dev/null
expect_failure "$tool" render a/x.json b/x.json --out-dir batch
grep -q 'would write the same outputs' errors.txt || fail "colliding names: $(cat errors.txt)"
if "$tool" render b.json missing.json --out-dir batch 2>progress.txt; then fail "a batch with a missing input"; fi
grep -q 'missing.json: failed' progress.txt || fail "batch failure: $(cat progress.txt)"
echo "scrivlet tool: every command behaved"

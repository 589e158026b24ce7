// scrivlet render: saved strokes, record files or 19794-7 time series drawn again as PNG, PDF, SVG
// and XML.
#include "arguments.h"
#include "batch.h"
#include "commands.h"
#include "render_output.h"

#include <scrivlet/record_file.h>
#include <scrivlet/stroke_json.h>
#include <scrivlet/time_series_import.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

namespace scrivlet::tool {

namespace {

const char* kUsage = R"(usage: scrivlet render [options] INPUT...

Draws signatures again through the library's renderer. An INPUT is a strokes document (JSON), a
record file (JSON) or an ISO/IEC 19794-7 time series (XML).

  -o, --output FILE     with one INPUT: the file to write; its extension (.png .pdf .svg .xml .json)
                        is the format, .json a record file (what `scrivlet seal` takes)
  --out-dir DIR         write NAME.FORMAT into DIR (made if missing) for every INPUT (default: here)
  --formats LIST        formats to write into --out-dir, from png,pdf,svg,xml,json (default png)
  --scale S             output units per point (default 2)
  --color #RRGGBB       the ink's colour (default black)
  --date                stamp the date of signing (a record file's time, else now)
  --date-time           stamp the date and time
  --hash                stamp the hash badge (a record file's hash, else a new one)
  --hash-text TEXT      stamp this text as the hash
  -j, --jobs N          inputs drawn at once (default: the number of cores)
  -h, --help            this help
)";

std::optional<QnColor> colorOf(const std::string& text) {
  unsigned red, green, blue;
  char end;
  if (text.size() != 7 || std::sscanf(text.c_str(), "#%2x%2x%2x%c", &red, &green, &blue, &end) != 3)
    return std::nullopt;
  return QnColor(red / 255.0, green / 255.0, blue / 255.0, 1.0);
}

// Whether any point is drawn with a pen wider than nothing.
bool hasInk(const QnStrokeListRef& strokes) {
  for (const QnStrokeRef& stroke : strokes ? *strokes : QnStrokeList{})
    for (const QnSignaturePoint& p : stroke ? *stroke : QnStroke{})
      if (p.diameter > 0) return true;
  return false;
}

}  // namespace

std::optional<RecordFile> loadSignature(const std::string& path, std::string* error) {
  std::optional<std::string> text = readFile(path);
  if (!text) return *error = "cannot read " + path, std::nullopt;
  size_t start = text->find_first_not_of(" \t\r\n");
  if (text->find("\"scrivlet-record\"") != std::string::npos) {
    Result<RecordFile> record = recordFromJson(*text);
    if (!record) return *error = path + " is not a record file: " + record.error().message(), std::nullopt;
    return std::move(*record);
  }
  RecordFile record;
  bool xml = start != std::string::npos && (*text)[start] == '<';
  Result<QnStrokeListRef> strokes = xml ? strokesFromTimeSeriesXml(*text) : strokesFromJson(*text);
  if (!strokes)
    return *error = path + (xml ? " is not a time series: " : " is not a strokes document: ") + strokes.error().message(),
           std::nullopt;
  record.setStrokes(*strokes);
  return record;
}

int renderCommand(int argc, char** argv) {
  Arguments args =
      parseArguments(argc, argv, 2, {"output", "out-dir", "formats", "scale", "color", "hash-text", "jobs"},
                     {"date", "date-time", "hash"});
  if (args.has("help")) return std::fputs(kUsage, stdout), 0;
  if (!args.error.empty()) return failure("render", args.error);
  if (args.inputs.empty()) return failure("render", "no input given (see --help)");
  if (args.has("output") && args.inputs.size() != 1)
    return failure("render", "--output takes one input; use --out-dir");

  bool ok = true;
  RecordRenderSettings settings;
  settings.setExportScale(float(args.number("scale", &ok).value_or(2)));
  std::optional<double> jobs = args.number("jobs", &ok);
  if (!ok || settings.exportScale() <= 0 || (jobs && *jobs < 1))
    return failure("render", "--scale and --jobs take positive numbers");
  if (args.has("color")) {
    std::optional<QnColor> color = colorOf(args.value("color"));
    if (!color) return failure("render", "--color takes #RRGGBB");
    settings.setStrokeColor(color);
  }
  settings.setShowDate(args.has("date") || args.has("date-time"));
  settings.setDateIncludesTime(args.has("date-time"));
  settings.setShowHash(args.has("hash") || args.has("hash-text"));

  std::vector<std::string> formats;
  if (args.has("output")) {
    formats = {std::filesystem::path(args.value("output")).extension().string()};
    if (!formats[0].empty()) formats[0].erase(0, 1);
  } else {
    formats = splitFormats(args.value("formats", "png"));
  }
  for (const std::string& format : formats)
    if (!isOutputFormat(format))
      return failure("render", "unknown format \"" + format + "\" (png, pdf, svg, xml or json)");

  if (std::string collision = collidingStems(args.inputs); !collision.empty() && !args.has("output"))
    return failure("render", collision);
  if (args.has("out-dir")) {
    std::error_code ignored;  // a folder that cannot be made shows as a file that cannot be written
    std::filesystem::create_directories(args.value("out-dir"), ignored);
  }
  int workers = jobs ? int(std::min(*jobs, 256.0)) : defaultJobs();
  return runBatch(args.inputs, workers, [&](const std::string& input) {
    std::string error;
    std::optional<RecordFile> signature = loadSignature(input, &error);
    if (!signature) return error.empty() ? 1 : failure("render", error);
    if (!hasInk(signature->strokes())) return failure("render", input + " has no ink to draw: no point has a pen wider than 0");
    RecordRenderSettings these = settings;
    if (!signature->hash().empty()) these.setHash(signature->hash());
    if (args.has("hash-text")) these.setHash(args.value("hash-text"));
    if (signature->timestamp() != 0) these.setTimestamp(signature->timestamp());
    // A record file's strokes are drawn for the device they were signed on.
    if (signature->device().pixelsPerInch() > 0) these.setDevice(signature->device());
    auto record = renderRecordOfStrokes(signature->strokes(), these);
    if (!record) return failure("render", input + " has no points to draw");
    std::string stem = std::filesystem::path(input).stem().string();
    for (const std::string& format : formats) {
      std::string path = args.has("output")
                             ? args.value("output")
                             : (std::filesystem::path(args.value("out-dir", ".")) / (stem + "." + format)).string();
      if (sameFile(path, input)) return failure("render", path + " is an input: not written over");
      if (!writeOutput(*record, format, path, &error)) return failure("render", error);
    }
    return 0;
  });
}

}  // namespace scrivlet::tool

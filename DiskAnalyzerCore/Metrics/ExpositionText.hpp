#pragma once

#include "Metrics/MetricFamily.hpp"

#include <span>
#include <string>
#include <string_view>

// Metric families in Prometheus's text exposition format (version 0.0.4), as node_exporter's
// textfile collector and `promtool check metrics` read it:
//
//     # HELP tarnwick_place_size_bytes Size on disk of a scanned place at its latest readable snapshot.
//     # TYPE tarnwick_place_size_bytes gauge
//     tarnwick_place_size_bytes{path="/srv/a \"b\"\\c\nd",volume="3c1e0d2a"} 52000000000
//
// Label values are UTF-8 with backslash, double quote and line feed escaped as \\, \" and \n.
// A path is bytes, not necessarily UTF-8. One that is not, or that holds a backslash or a
// control character other than the line feed (a tab, a terminal's escape), has its label value
// written with each stray byte and each such character as the four characters "\xff" and each
// backslash doubled; any other path is its own label value. So every label names exactly one path, and
// the common ones read as they are. No timestamps: the textfile collector refuses them.
namespace tarnwick::ExpositionText {

// The label value for a name or path, as described above.
std::string labelValue(std::string_view text);

// Every family with its HELP and TYPE lines, each line ended by a line feed. Within a family a
// sample whose labels read the same as an earlier one's is left out: the format allows no
// duplicate series, and a collector refuses the whole file for one.
std::string render(std::span<const MetricFamily> families);

}

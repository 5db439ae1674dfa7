#pragma once

// Every typed answer a command returns, one header each beside this one.
namespace tarnwick {

struct AlertAddedAnswer;
struct AlertsAnswer;
struct AlertsRemovedAnswer;
struct AlreadyRunningAnswer;
struct ChangesAnswer;
struct DisksAnswer;
struct FindAnswer;
struct HistoryAnswer;
struct MetricsAnswer;
struct ScanAnswer;
struct ShowAnswer;
struct StatusAnswer;
struct SummaryAnswer;
struct TypesAnswer;

}

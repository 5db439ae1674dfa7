#include "AnswerPages.hpp"

#include "Agent/EchoedText.hpp"
#include "ScanAnswer.hpp"

namespace tarnwick::AnswerPages {

namespace {

std::string appWindowLine(WindowPresence window)
{
    return window == WindowPresence::inFront ? "Tarnwick's window is in front."
                                             : "Tarnwick runs without a window here (no display); the command line works with it.";
}

}

AgentResult page(const ScanAnswer& answer, int)
{
    std::string path = EchoedText::shown(answer.path);
    JSONValue::Object json { { "path", EchoedText::shortened(answer.path) }, { "scan_started", answer.action != ScanAnswer::Action::opened } };
    std::string text;
    switch (answer.action) {
    case ScanAnswer::Action::opened:
        text = "Opened " + path + " in the existing scan. Run summary for its contents.";
        json["opened"] = true;
        break;
    case ScanAnswer::Action::started:
        text = "Scanning " + path + ". Run wait, then summary.";
        json["opened"] = false;
        break;
    case ScanAnswer::Action::startedAgain:
        text = "Scanning " + path + " again. Run wait, then summary: it reports the size before the rescan.";
        break;
    }
    if (answer.window)
        text += "\n" + appWindowLine(*answer.window);
    return AgentResult::success(text, JSONValue(json));
}

AgentResult page(const AlreadyRunningAnswer& answer, int)
{
    return AgentResult::success("Tarnwick is already running. " + appWindowLine(answer.window),
        JSONValue::Object { { "running", true }, { "window", answer.window == WindowPresence::inFront } });
}

}

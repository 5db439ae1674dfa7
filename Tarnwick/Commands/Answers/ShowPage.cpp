#include "AnswerPages.hpp"

#include "Agent/EchoedText.hpp"
#include "ShowAnswer.hpp"

namespace tarnwick::AnswerPages {

AgentResult page(const ShowAnswer& answer, int)
{
    std::string coloured = "coloured by " + std::string(ColorModes::title(answer.colorMode)) + ".";
    std::string text = answer.whenScanFinishes
        ? (answer.folder ? "Will open " : "Will select ") + EchoedText::shown(answer.path) + " on the map when the scan finishes, " + coloured
            + " The scan is still running; run wait to know when."
        : (answer.folder ? "Opened " : "Selected ") + EchoedText::shown(answer.path) + " on the map, " + coloured;
    JSONValue::Object json { { "path", EchoedText::shortened(answer.path) }, { "opened", answer.folder }, { "selected", !answer.folder },
        { "color_mode", std::string(ColorModes::commandLineName(answer.colorMode)) }, { "still_scanning", answer.whenScanFinishes } };
    // What show opened is only seen when the window is: an app started by the command line
    // keeps its window hidden until asked, so show brings it forward, or says there is none.
    if (answer.window) {
        text += *answer.window == WindowPresence::inFront ? " The window is in front."
                                                          : " Tarnwick runs without a window here (no display), so nothing is shown.";
        json["window"] = *answer.window == WindowPresence::inFront;
    }
    return AgentResult::success(text, JSONValue(json));
}

}

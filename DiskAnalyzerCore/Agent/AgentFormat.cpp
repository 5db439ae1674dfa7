#include "Agent/AgentFormat.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "Agent/AgentResult.hpp"
#include "Agent/EchoedText.hpp"
#include "Agent/OutputLimit.hpp"

namespace tarnwick::AgentFormat {

JSONValue isoDate(std::optional<Date> date)
{
    if (!date)
        return JSONValue();
    return JSONValue(isoDateText(*date));
}

std::string counted(std::int64_t count, std::string_view singular, std::string_view plural)
{
    return std::to_string(count) + " " + std::string(count == 1 ? singular : plural);
}

AgentResult withinLimit(AgentResult result)
{
    if (result.fits())
        return result;
    if (result.isError) {
        const JSONValue* message = result.structured ? result.structured->member("message") : nullptr;
        std::string text = message && message->stringValue() ? *message->stringValue() : result.text;
        AgentResult shortened = AgentResult::failure(result.errorCode().value_or(std::string(AgentErrorCode::generic)),
            EchoedText::shortened(text, OutputLimit::bytes / 4));
        if (shortened.fits())
            return shortened;
    }
    return AgentResult::failure(AgentErrorCode::outputTooLarge, OutputLimit::answerTooLarge);
}

}

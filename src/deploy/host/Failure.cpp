#include "deploy/host/Failure.h"

namespace ZET::Deploy {

UsageError::~UsageError() = default;
Failure::~Failure() = default;
Damage::~Damage() = default;
Interrupted::~Interrupted() = default;

Problem ProblemOf(const std::string& file, const Failure& failure) {
    std::string text = failure.what();
    if (text.starts_with(file + ": ")) text.erase(0, file.size() + 2);
    const std::size_t remedy = text.rfind(" (");
    if (remedy == std::string::npos || !text.ends_with(')'))
        return {file, 0, 0, text, "repair or replace the file"};
    return {file, 0, 0, text.substr(0, remedy), text.substr(remedy + 2, text.size() - remedy - 3)};
}

}  // namespace ZET::Deploy

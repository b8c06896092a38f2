#include "deploy/targets/UsedPlaceholders.h"

#include <string_view>
#include <vector>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/targets/TemplateFiles.h"
#include "text/Lines.h"
#include "text/Placeholders.h"

namespace ZET::Deploy {

std::set<std::string> UsedAnywhere(Deployment& product, const std::set<std::string>& used) {
    std::set<std::string> all = used;
    const auto take = [&](const std::vector<std::string>& placeholders) {
        all.insert(placeholders.begin(), placeholders.end());
    };
    const auto takeLines = [&](std::string_view lines) {
        while (!lines.empty())
            take(Text::PlaceholdersOf(Text::TakeLine(lines).text));
    };
    for (const Target& target : product.Lists().Targets().targets) {
        const std::string file = TemplateFile(product, target.templateName);
        try {
            if (!file.empty() && product.HostPaths().StaysInside(file)) ReadChunks(file, takeLines);
        } catch (const Failure&) {
            // Whoever wants to render it gets the reason.
        }
    }
    for (const ListedEdit& edit : product.Lists().Targets().edits)
        take(Text::PlaceholdersOfValue(edit.value + edit.text));
    for (const auto& [placeholder, value] : product.Values().Own())
        take(Text::PlaceholdersOfValue(value));
    const std::set<std::string>& clashing = product.Values().Clashing();
    all.insert(clashing.begin(), clashing.end());
    return all;
}

}  // namespace ZET::Deploy

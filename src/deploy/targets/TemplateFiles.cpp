#include "deploy/targets/TemplateFiles.h"

#include <map>

#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"
#include "deploy/lists/Targets.h"
#include "deploy/targets/ClaimedFiles.h"
#include "posix/PathNames.h"
#include "zet/ZETFiles.h"

namespace ZET::Deploy {

std::string ShippedFile(Host& host, const std::string& templateName) {
    return host.Param("ZET_CFG_TEMPL_DIR") + "/" + templateName;
}

std::string WorkingCopy(Host& host, const std::string& templateName) {
    return host.Param("ZET_CFG_DIR") + "/" + templateName;
}

std::string TemplateFile(Host& host, const std::string& templateName) {
    for (const std::string& file : {WorkingCopy(host, templateName), ShippedFile(host, templateName)})
        if (IsFileExist(file)) return file;
    return "";
}

TemplateFiles FilesOfTemplate(Host& host, const std::string& name) {
    return {name, ShippedFile(host, name), WorkingCopy(host, name)};
}

Failure MissingTemplate(const TemplateFiles& files) {
    return Failure({.file = files.shipped,
                    .text = _("the template is missing"),
                    .remedy = _("correct its name, or ZET_CFG_TEMPL_DIR")});
}

void RequireTemplateName(const std::string& name) {
    if (LeavesTemplates(name)) {
        throw UsageError(
            Words("NAME \"%s\" leaves the directory of the templates (name a template below it)", name));
    }
    if (!IsPlainName(name))
        throw UsageError(Words("NAME \"%s\" has parts that lead nowhere (write \"%s\")", name,
                               Normalised(name).substr(1)));
    if (name == kTargetList || IsAmongLists(name))
        throw UsageError(
            Words("NAME \"%s\" is no template, but one of the lists or values (name a template)", name));
}

std::vector<TemplateFiles> FilesOfTemplates(Host& host, const std::vector<std::string>& names) {
    std::vector<TemplateFiles> files;
    for (const std::string& name : names) {
        RequireTemplateName(name);
        files.push_back(FilesOfTemplate(host, name));
    }
    if (!names.empty()) return files;
    for (const Target& target : SelectTargets(host, {}))
        files.push_back(FilesOfTemplate(host, target.templateName));
    return files;
}

std::vector<std::string> AllToWrite(Host& host, const std::vector<FilesToWrite>& templates) {
    std::vector<std::string> all;
    std::map<std::string, std::string> nameOf;
    const Paths& paths = host.HostPaths();
    ClaimedFiles own(host);
    for (const FilesToWrite& written : templates) {
        const std::string& name = written.templateName;
        for (const std::string& file : written.files) {
            const std::string use = own.UseBesideTargets(file);
            if (!use.empty()) {
                throw UsageError(
                    Words("NAME \"%s\" is installed as %s, which is %s (give the template another name)",
                          name, file, use));
            }
            const auto [other, isNew] = nameOf.emplace(paths.Canonical(paths.NameInside(file)), name);
            if (!isNew) {
                throw UsageError(
                    Words("NAME \"%s\" is installed into the files of \"%s\" too (name each file once)", name,
                          other->second));
            }
            all.push_back(file);
        }
    }
    return all;
}

void RequireInside(Host& host, const TemplateFiles& files) {
    for (const std::string& file : {files.shipped, files.workingCopy}) {
        if (!host.HostPaths().StaysInside(file))
            throw Failure({.file = file,
                           .text = _("is a link that leads out of the root directory"),
                           .remedy = _("put a file there")});
    }
}

void InstallMissingCopy(HostProduct& product, const std::string& templateName) {
    if (!IsFileExist(WorkingCopy(product, templateName)))
        product.Config().InstallConfigFileTemplate(templateName);
}

}  // namespace ZET::Deploy

// atdp describe: what the plug-in says of itself.
#include <CLI/CLI.hpp>
#include <memory>
#include <new>
#include <nlohmann/json.hpp>
#include <string>
#include <variant>
#include <vector>

#include "host/commands.h"
#include "host/console.h"
#include "host/exit_codes.h"
#include "host/text_escape.h"

namespace atdp::host {
namespace {

struct TextOf {
    std::string operator()(const std::string& text) const { return text; }
    std::string operator()(std::uint32_t number) const { return std::to_string(number); }
    std::string operator()(const std::vector<std::string>& list) const {
        std::string text;
        for (const std::string& item : list) text += (text.empty() ? "" : ", ") + item;
        return text;
    }
};

std::string textOf(const Properties& properties) {
    std::string text;
    for (const auto& [key, value] : properties) {
        text += printableText(key + ": " + std::visit(TextOf(), value)) + "\n";
    }
    return text;
}

std::string jsonOf(const Properties& properties) {
    nlohmann::ordered_json object = nlohmann::ordered_json::object();
    for (const auto& [key, value] : properties) {
        std::visit([&object, name = key](const auto& item) { object[name] = item; }, value);
    }
    return object.dump(2) + "\n";
}

int describe(PluginModule& module, bool asJson) {
    const std::unique_ptr<Properties> properties = module.plugin().getProperties();
    if (!properties) throw std::bad_alloc();
    print(asJson ? jsonOf(*properties) : textOf(*properties));
    return kExitOk;
}

}  // namespace

void addDescribeCommand(CLI::App& app, Command& chosen) {
    CLI::App* const command =
        app.add_subcommand("describe", "Show what the plug-in says of itself");
    const auto asJson = std::make_shared<bool>(false);
    command->add_flag("--json", *asJson, "Write a JSON object");
    command->callback([&chosen, asJson] {
        chosen = [asJson](PluginModule& module) { return describe(module, *asJson); };
    });
}

}  // namespace atdp::host

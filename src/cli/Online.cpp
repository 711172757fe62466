// `thermika online`: whether the server really answers, and how fast.
#include <memory>
#include <string>

#include <nlohmann/json.hpp>

#include "cli/Commands.h"
#include "cli/Escape.h"
#include "cli/Server.h"

namespace thermika::cli {

namespace {

constexpr unsigned kSeconds = 10;
constexpr const char* kNextStep = " (another server or a folder: --from)";

Status runOnline(Session& session, const std::string& from) {
    const ServerAnswer answer = askServer(from, kSeconds);
    if (!answer.isKnown) throw Problem(Status::kFailed, answerText(answer) + kNextStep);
    Output& output = session.output;
    if (output.isJson)
        output.addDocument(answerDocument(answer));
    else if (answer.isGood())
        output.add(shown(answerText(answer)) + "\n");
    if (answer.isGood()) return Status::kYes;
    output.note(answerText(answer) + kNextStep);
    return Status::kNo;
}

}  // namespace

Run addOnline(CLI::App& command) {
    const auto from = std::make_shared<std::string>();
    command.add_option("--from", *from, "Ask a mirror of the vendor's server, or look at a folder")
        ->type_name("URL|FOLDER");
    command.footer("Example: thermika online");
    return [from](Session& session) { return runOnline(session, *from); };
}

}  // namespace thermika::cli

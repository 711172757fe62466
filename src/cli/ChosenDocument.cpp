// The document is judged as a user's own would be: a description is trusted no more than a user.
#include "cli/ChosenDocument.h"

#include "cli/CharacterData.h"
#include "cli/Choice.h"
#include "cli/Command.h"
#include "cli/ValidateDocument.h"
#include "cli/ValidateMarkup.h"
#include "sdk/base/BuildConfig.h"
#include "sdk/camera/ConfigurationDocument.h"

namespace thermika::cli {

std::string chosenDocument(ConfigCali& cali, const ChoiceRequest& request) {
    const Choice choice = choose(cali, request.optics, request.range);
    // Markup in it would be the document's own.
    if (!readText(choice.text))
        throw Problem(Status::kFailed, "the optics text " + inQuotes(choice.text) +
                                           " cannot stand in an XML document (choose another "
                                           "optics, or ask the vendor for another description)");
    dax::ConfigurationDocument document;
    document.serial = request.serial;
    document.formatsDir = dax::kDefaultFormatsDir;
    document.calibrationDir = request.directory;
    document.fovDeg = choice.fovDeg;
    document.minTempC = choice.minTempC;
    document.maxTempC = choice.maxTempC;
    document.isChosen = true;
    document.opticsText = choice.text;
    std::string text = document.text();
    const DocumentFindings result = checkDocument(text);
    if (result.findings.empty()) return text;
    const Finding& finding = result.findings.front();
    throw Problem(Status::kFailed, "the choice makes no right document: " + finding.wrong + "; " +
                                       finding.right +
                                       " (choose another optics or range, or ask the vendor for "
                                       "another description)");
}

}  // namespace thermika::cli

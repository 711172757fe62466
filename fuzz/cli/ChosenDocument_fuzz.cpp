// Choosing from any calibration description: each choice makes a document that `thermika validate`
// accepts, or is refused with a reason.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "cli/CharacterData.h"
#include "cli/Choice.h"
#include "cli/ChosenDocument.h"
#include "cli/Command.h"
#include "cli/ValidateCamera.h"
#include "cli/ValidateDocument.h"
#include "sdk/IRCalibrationManager.h"
#include "support/TestFiles.h"

namespace {

using namespace thermika::cli;

constexpr int kSerial = 14080045;
constexpr std::size_t kTried = 12;  // of a kind: a description may hold thousands

void require(bool kept) {
    if (!kept) std::abort();
}

void tryChoice(ConfigCali& cali, const std::string& optics, const std::string& range) {
    std::string document;
    try {
        document = chosenDocument(cali, {kSerial, "/cali", optics, range});
    } catch (const Problem& problem) {
        require(problem.what() != std::string());
        return;
    }
    const DocumentFindings result = checkDocument(document);
    require(result.findings.empty() && choosesOptics(result.settings));
    const auto* const entries =
        dax::IRCalibrationManager::getInstance()->getAvailableOptics(kSerial);
    require(checkChoice(result.settings, *entries).empty());
    require(readText(choose(cali, optics, range).text) == result.settings.opticsText->value);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const thermika_test::TempDir folder;
    thermika_test::writeFile(folder / "Cali-14080045.xml",
                             {reinterpret_cast<const char*>(data), size});
    ConfigCali& cali = *ConfigCali::getInstance();
    cali.load(folder.path().c_str(), kSerial + 1);  // it is missing: the last one is forgotten
    if (cali.load(folder.path().c_str(), kSerial) != 0 || cali.getOpticsCount() == 0) return 0;
    tryChoice(cali, "", "");
    const std::vector<std::string> optics = opticsChoices(cali);
    for (std::size_t i = 0; i < std::min(optics.size(), kTried); ++i) {
        const OpticsChoice typed = *parseOptics(optics[i]);
        const auto ranges = rangeChoices(cali, typed.fovDeg, typed.text.value_or(""));
        tryChoice(cali, optics[i], "");
        for (std::size_t j = 0; j < std::min(ranges.size(), kTried); ++j)
            tryChoice(cali, optics[i], ranges[j]);
    }
    return 0;
}

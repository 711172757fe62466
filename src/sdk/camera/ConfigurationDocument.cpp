// The document's fixed lines, as users see them.
#include "sdk/camera/ConfigurationDocument.h"

#include <cstddef>

#include "sdk/base/BuildConfig.h"

namespace dax {

namespace {

constexpr std::size_t kFixedTextBytes = 2600;  // all but the two directories, with room to spare

}  // namespace

// Deliberate: as a suggestion, field of view, limits and optics text stand inside one XML comment,
// so they take no effect until the user removes the two lines around them. Blanks inside lines
// align the comments, "range-->" has none, and the directories are not escaped: users know the text
// like this.
std::string ConfigurationDocument::text() const {
    std::string out;
    out.reserve(kFixedTextBytes + formatsDir.size() + calibrationDir.size() + opticsText.size());
    out += R"(<?xml version="1.0" encoding="UTF-8"?>
<imager xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xmlns:xsd="http://www.w3.org/2001/XMLSchema">
  <serial>)";
    out += std::to_string(serial);
    out += R"(</serial>   <!-- Provide serial number, if you attach more than one camera -->
  <videoformatindex>0</videoformatindex> <!-- index of the used video format (USB endpoint) -->
  <formatspath>)";
    out += formatsDir;
    out += R"(</formatspath>
  <calipath>)";
    out += calibrationDir;
    out += R"(</calipath>
  <!-- Uncomment the following lines to specify user-defined parameters for the desired optic
       and temperature range. Be aware to specify meaningful parameters.
       See documentation for further information: )";
    out += kDocumentationUrl;
    out += R"(
       By default, the first available optic and the first meaningful temperature range are selected.
  -->
)";
    if (!isChosen) out += "  <!--\n";
    out += "  <fov>";
    out += std::to_string(fovDeg);
    out += R"(</fov>
  <temperature>
    <min>)";
    out += std::to_string(minTempC);
    out += R"(</min>
    <max>)";
    out += std::to_string(maxTempC);
    out += R"(</max>
  </temperature>
  <optics_text>)";
    if (isChosen) out += opticsText;
    out += "</optics_text>\n";
    if (!isChosen) out += "  -->\n";
    out +=
        R"(  <framerate>32.0</framerate>             <!-- scaled down frame rate, must be less or equal than camera frame rate -->
  <bispectral>0</bispectral>              <!-- 0=only thermal sensor, 1=bispectral technology (only RQ410/RQ450) -->
  <average>0</average>                    <!-- average callback frames over intermediate frames -->
  <autoflag>
    <enable>1</enable>
    <mininterval>15.0</mininterval>
    <maxinterval>0.0</maxinterval>
  </autoflag>
  <tchipmode>0</tchipmode>                <!-- 0=Floating (default), 1=Auto, 2=Fixed value -->
  <tchipfixedvalue>40.0</tchipfixedvalue> <!-- Fixed value for tchipmode=2 -->
  <focus>50.0</focus> <!-- position of focus motor in % of range [0; 100] -->
  <enable_extended_temp_range>0</enable_extended_temp_range> <!-- 0=Off, 1=On; Caution! Enables invalid extended temp range-->
  <buffer_queue_size>5</buffer_queue_size> <!-- internal buffer queue size -->
</imager>
)";
    return out;
}

}  // namespace dax

// The calibration description of one camera: which optics it was calibrated for, their temperature
// ranges and frame rates, and how the calibration files of each are named. One object a process,
// holding a built-in description until one is loaded. Nothing here is locked.
//
// Temperatures are degrees Celsius, fields of view degrees, frame rates frames per second; the
// fields of MainSection and TableParams are in the camera's own units.
//
// The types here stand in the global namespace. A program that defines another type of one of these
// names (Range, OPTICS, ...) in the global namespace as well breaks the rule of one definition: the
// linker notices nothing and the program may crash, even where no source includes both. Put your
// own types into a namespace.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace dax {
class CaliView;
}  // namespace dax

/// Names one optics. `text` may be null or empty, which is the same. In a record that was handed
/// out it points into the description, must not be written to and dies with the next load().
struct OPTICS {
    std::int32_t fov;  ///< field of view
    char* text;        ///< tells optics of one field of view apart
};

/// A temperature range, told from others by its exact bounds.
struct Range {
    float min;  ///< lower bound
    float max;  ///< upper bound
};

/// Of one range, for the image processing; nothing here reads them.
struct TableParams {
    /// From the element of that name.
    double T1 = 0.0;
    double T3 = 0.0;
    std::int16_t E1 = 0;
    std::int16_t E3 = 0;
    double Lambda = 0.0;
    double Reserved1 = 0.0;      ///< in no file and read by nobody
    double Reserved2 = -100.0;   ///< the same
    std::int16_t Reserved3 = 0;  ///< the same
    /// From the element of that name.
    bool Normalize = false;
};

/// What an optics is calibrated for, as the description gives it.
struct TemperatureRange {
    /// From the element of that name.
    std::int16_t Fid = 0;
    std::int16_t Skim = 0;
    std::int16_t SkimRatio = 0;
    float TempLo = 0.0F;
    float TempHi = 0.0F;
    float TempLoExt = -100.0F;  ///< a loaded range's extended bounds contain its bounds
    float TempHiExt = -100.0F;
    std::optional<std::vector<std::uint16_t>> Framerates;  ///< no list is not an empty list
    std::uint16_t Decimal = 1;
    TableParams Table;
};

/// One optics of the description.
struct OpticsDef {
    OpticsDef();  ///< with three ranges: -20 to 100, 0 to 250 and 150 to 900

    /// From the element of that name.
    std::int32_t FOV = 0;
    std::int32_t SerNo = 0;
    std::unique_ptr<char[]> Text;
    double Reserved = -1.0;                    ///< in no file and read by nobody
    bool SamplePointCali = false;              ///< it needs no characteristic-curve files
    std::vector<TemperatureRange> TempRanges;  ///< in the description's order
};

/// Kept for the image processing; nothing here reads it but load()'s log line.
struct MainSection {
    MainSection() = default;

    /// From the element of that name.
    std::uint16_t TecA = 3400;
    std::uint16_t TecB = 400;
    std::uint16_t TecC = 400;
    std::uint16_t TecD = 120;
    float TempTEC_Step = 5.0F;
    float Reserved = 10.0F;  ///< in no file and read by nobody
    float TempTECOffset = 294.5F;
    float TempTECGain = 13.055F;
    float TempFlagOffset = 0.0F;
    float TempChipFactor = 1.0F;
    float TempChipOffset = 0.0F;
    float TempBoxOffset = 0.0F;
    float TempOpticsOffset = 0.0F;
    float TempProcOffset = 0.0F;
    float TempHouseOffset = 0.0F;
    float PifInOffset = 0.0F;
    float PifInGain = 1.0F;
    float PifOutOffset = 0.0F;
    float PifOutGain = 1.0F;
    std::int16_t AddedOffset = 0;
    float BindTempChipToTempFlagOffset = 0.8F;
    std::uint16_t FlagCycles = 10;
    std::uint16_t FlagCycles_Ignore = 2;
    float AlphaLowTemp = 23.0F;
    float AlphaLowFactor = 1.0F;
    float TBoxTAmbDiff = 5.0F;
};

/// Queries answer from the description held, loaded or built in. "Key" is what names an optics; it
/// matches the first optics with that field of view and the same text, where null and empty are the
/// same. A range matches the first one of the optics with exactly those normal bounds. A null key
/// or range, or an index that is negative or past the end, finds nothing. Records handed out are
/// the caller's, who frees them with delete. Allocation failures propagate, and the object stays
/// usable; where a program's own operator new throws a character string, a query that hands out a
/// record answers null.
class ConfigCali {
public:
    /// The one object, created on first use and never destroyed.
    static ConfigCali* getInstance();

    /// Holds the built-in description: one optics, FOV 30, with the ranges of a new OpticsDef.
    ConfigCali();
    ~ConfigCali();  ///< records handed out stay valid
    ConfigCali(const ConfigCali&) = delete;
    ConfigCali& operator=(const ConfigCali&) = delete;

    /// Loads "Cali-<serial>.xml" from `dir`: 0, also when that serial is loaded already, whatever
    /// `dir` says. -2147024891, and the built-in description is held, when the reader cannot open
    /// the file (see SimpleXML::open) or `dir` is null. What the file lacks keeps its default;
    /// whole numbers are cut to 16 bits where the field has 16.
    /// Process: creates the logger. Unless the serial is loaded already: creates `dir` (the default
    /// directory for an empty one), one level, mode 0777 less the umask, when it is missing, and
    /// the calibration manager; LC_NUMERIC is "C", or bears the name of LC_CTYPE once a value was
    /// read; a path of more than 259 characters ends the process with abort() and a line on
    /// standard error.
    int load(const char* dir, int serial);

    /// Whether the description of `serial` was loaded.
    bool isLoaded(int serial);

    int getOpticsCount();          ///< of the description held
    OPTICS* getOptics(int index);  ///< null when there is none

    /// Position of an optics, -1 when there is none. The second form takes a missing text, in its
    /// argument or in the description, as matching any.
    int getOpticsIndex(OPTICS* key);
    int getOpticsIndex(int fov, char* text);

    /// Whether the optics at `index` needs no characteristic-curve files; false when there is none.
    bool isSamplePointCali(int index);

    int getTempRangeCount(OPTICS* key);  ///< -1 when there is no such optics
    int getTempRangeCount(int fov, char* text);
    Range* getTempRange(OPTICS* key, int index);  ///< null when there is none
    Range* getTempRange(int fov, char* text, int index);
    Range* getExtendedTempRange(OPTICS* key, int index);  ///< null when there is none
    Range* getExtendedTempRange(int fov, char* text, int index);
    Range* getExtendedTempRange(int fov, char* text, float min, float max);
    int getTempRangeIndex(OPTICS* key, Range* range);  ///< -1 when there is none
    int getTempRangeIndex(int fov, char* text, float min, float max);

    /// The lowest and the highest bound of all ranges, or of one optics' (null when there is no
    /// such optics); 1000000 to -1000000 when there are no ranges.
    Range* getTempRangeOverAll();
    Range* getTempRangeOverAll(OPTICS* key);

    int getFramerateCount(OPTICS* key, Range* range);  ///< -1 when there is no such range

    /// Position of `framerate`. -1 when there is no such range or it has no list of frame rates, -2
    /// when its list lacks this one.
    int getFramerateIndex(OPTICS* key, Range* range, unsigned short framerate);
    int getFramerateIndex(int fov, char* text, float min, float max, unsigned short framerate);
    unsigned short getFramerate(OPTICS* key, Range* range, int index);  ///< 0 when there is none

    /// Whether a range allows `framerate`, which becomes 0 unless the range's list holds it.
    /// Without a list, or without such a range, any is allowed.
    bool checkFramerate(OPTICS* optics, Range* range, unsigned short& framerate);
    bool checkFramerate(int fov, char* text, float min, float max, unsigned short& framerate);

    /// A range's `Decimal`; 0 when there is no such range. The optics is looked up as by the second
    /// getOpticsIndex(), the range's position as by getTempRangeIndex().
    unsigned short getTempRangeDecimal(int fov, char* text, float min, float max);

    /// Writes "<serial>-<fov>[-<text>]-<min>-<max>[-<framerate>]", cut to `outSize` bytes and
    /// terminated (nothing when that is not positive): bounds without fraction, "M" for minus, text
    /// and frame rate left out when empty or 0. A number that no int holds is the largest int,
    /// NaN is 0. False only when `range` is null.
    static bool caliFilenameString(int serial, int fov, char* text, Range* range,
                                   unsigned short framerate, char* out, int outSize);
    static bool caliFilenameString(int serial, int fov, char* text, float min, float max,
                                   unsigned short framerate, char* out, int outSize);

private:
    friend class dax::CaliView;

    MainSection m_main;
    std::vector<OpticsDef> m_optics;
    bool loaded = false;
    std::int32_t serial = -1;

    /// Where the optics of each key stand in the list.
    struct OpticsIndex {
        explicit OpticsIndex(const std::vector<OpticsDef>& optics);

        std::vector<std::size_t> firstOfKey;   ///< each key's first position, in the order of keys
        std::vector<std::size_t> firstOfSame;  ///< for each position, the first one with its key
    };

    bool m_hasEverLoaded = false;
    OpticsIndex m_index{m_optics};
    std::size_t m_lastAsked = 0;  ///< most queries name the optics just handed out or found

    static ConfigCali* _this;

    void reset();
    void hold(std::vector<OpticsDef> optics);
    const OpticsDef* findOptics(int fov, const char* text);
    const TemperatureRange* findRange(int fov, const char* text, float min, float max);
    const TemperatureRange* rangeAt(int fov, const char* text, int index);
};

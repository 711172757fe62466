// The process-wide object that knows where a camera's calibration and format files lie: it finds
// the camera on the USB bus, composes its configuration document, and checks, fetches or copies its
// calibration files. Nothing here is locked.
//
// Every operation that logs, or fails to read a document, creates the kelvra::Logger when there is
// none; one that nobody has configured says so once on standard error.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace dax {

/// One optics of a camera.
struct OpticsEntry {
    std::int32_t fov;  ///< field of view, in degrees
    /// (lower, upper) limits in degrees Celsius, fractions dropped, in the description's order.
    std::vector<std::pair<std::int32_t, std::int32_t>> tempRanges;
    std::string text;  ///< "" when the optics has none
};

/// The directories and every operation on a camera.
class IRCalibrationManager {
public:
    /// The one manager, created with the default directories on first use; it stays ours until
    /// somebody deletes it. An allocation failure propagates and leaves no manager behind.
    static IRCalibrationManager* getInstance();

    /// Prefer getInstance(): it never hands out an object made here.
    IRCalibrationManager();

    /// Process: the next getInstance() creates a fresh manager, whichever object was destroyed.
    ~IRCalibrationManager();
    IRCalibrationManager(const IRCalibrationManager&) = delete;
    IRCalibrationManager& operator=(const IRCalibrationManager&) = delete;

    /// The manager's own arrays of 260 bytes, which the caller may write; not terminated when set
    /// to 260 characters or more. At first the directories chosen at build (THERMIKA_DATA_DIR),
    /// "/usr/share/libthermika/cali" and "/usr/share/libthermika" unless told otherwise.
    char* getCalibrationDir();
    char* getFormatsDir();  ///< as getCalibrationDir()

    /// Copies at most 260 bytes of `dir`, which may lie in the manager's own arrays, and fills the
    /// rest with zero bytes; null changes nothing.
    /// Neither checked nor terminated: keep directories below 260 characters (with
    /// "/Cali-<serial>.xml" behind them where a description is to be loaded) and without a trailing
    /// slash.
    void setCalibrationDir(const char* dir);
    void setFormatsDir(const char* dir);  ///< as setCalibrationDir()

    /// Looks on the USB bus for the camera numbered `serial`, or for any when it is 0, and stores
    /// its number there. The first camera in the order of /sys/bus/usb/devices wins; when any will
    /// do, one whose serial text is 0 or no number is passed over, and so is in either case one
    /// whose serial text cannot be read. The number is not checked: a device may give one of more
    /// or fewer than 8 digits. False when there is none (`serial` becomes 0, also when reading that
    /// directory ends early) or when it cannot be entered or opened (`serial` stays as it was, the
    /// log tells why). An allocation failure propagates; `serial` may be 0 then.
    /// Process: the working directory is /sys/bus/usb/devices afterwards unless it could not be
    /// entered; `errno` is 0.
    bool findSerial(unsigned long& serial);

    /// The configuration document of camera `serial`, each of its 33 lines ended by a line feed. It
    /// suggests field of view (degrees) and limits (degrees Celsius) of the first optics and range
    /// in the file "Cali-<serial>.xml" of the calibration directory, looked for further out where
    /// an enclosing element is missing. What is nowhere or no number, or all when the file cannot
    /// be read or held in memory, is 0, -20 and 100. The document shows a number of more than 32
    /// bits whole, and the description is looked for by all of it; every other operation makes file
    /// names of its low 32 bits. The reader logs why a file cannot be read. Only a failure to
    /// allocate the document itself propagates.
    /// Process: LC_NUMERIC is "C" afterwards.
    std::string generateConfiguration(unsigned long serial);

    /// The calibration files that camera `serial` needs and the calibration directory lacks, each
    /// name followed by ";"; the caller frees the list with delete[]. Null when it lacks none, ""
    /// when the last ones came while it looked. A description that cannot be loaded is the one file
    /// named; one that was loaded before, from whatever directory, is used as it is and not named.
    /// Process: as checkCaliFiles().
    char* checkCalibration(unsigned long serial);

    /// The same for any directory and names; true when nothing is missing. An empty directory is
    /// "Imager" below the working directory; one of 260 characters or more holds no file. Ask first
    /// with `missing` null: `*size` becomes the bytes that the list needs (the largest int where
    /// none holds them). Then pass `*size` as it is and a buffer of that many bytes plus the length
    /// of `separator`, which is not counted; it stands after the name of a missing description
    /// only, which is then the whole list, and the rest of the `*size` bytes becomes zero. Other
    /// names have ";". `*size` bounds each name and separator alone: a buffer smaller than told, or
    /// files that vanish between the two calls, let the list run over its end, which
    /// checkCalibration() is safe from. The formats are printf's: of an int in `xmlFormat` (cut to
    /// 19 characters), of a string in the others (to 259). No other pointer may be null, but for
    /// `separator` where the description is loaded.
    /// Process: creates the directory, one level, mode 0777 less the umask, when it is missing.
    /// Loads the description unless it is loaded, with ConfigCali::load(): a path of more than 259
    /// characters ends the process with abort(); LC_NUMERIC is "C" afterwards, or bears the name of
    /// LC_CTYPE once a value was read.
    bool checkCaliFiles(const char* directory, int serial, char* missing, int* size,
                        const char* xmlFormat, const char* datFormat, const char* prnFormat,
                        const char* separator);

    /// Composes "<directory>/<name><suffix>" in `out`, each of the three cut to `length`
    /// characters; in place of an empty `directory`, "Imager", cut too, below the working
    /// directory. `out` must hold 4 * `length` + 9 bytes; 3 * `length` + 2 when `directory` is not
    /// empty; 2 * `length` + 1 when it also has fewer than `length` characters, the name at most
    /// `length` and the suffix none. False, `out` unchanged, when `length` is not positive, when
    /// the directory is empty and there is no working directory, or when that one's path has more
    /// than 2 * `length` characters.
    /// Process: creates the directory, one level, mode 0777 less the umask, when it is missing.
    bool createConfigFilepath(char* out, const char* directory, short length, const char* name,
                              const char* suffix);

    /// Fetches the missing files of camera `serial` from the vendor's server into the calibration
    /// directory, which must exist; blocks meanwhile. True when nothing is missing, and after three
    /// passes whatever is missing then. A file counts as there once it can be opened, and wget
    /// leaves an empty one for a file that the server lacks: true is no proof of what the files
    /// hold. False, with a line in the log, when the directory is not writable, `serial` is 0 or a
    /// pass could not be made.
    /// Process: creates or empties ".thermika_access" in the directory and removes it (a link of
    /// that name is followed and what it leads to emptied); as checkCaliFiles() (which may end the
    /// process) and downloadTarget(), by turns.
    bool downloadCalibration(unsigned long serial);

    /// Fetches the files named in `targets`, each followed by ";", into `targetDir` by running
    /// wget, which inherits the process's outputs. True once the command for one of them was
    /// started and waited for, as far as the C library tells, whether or not the file came. False,
    /// with lines in the log, when none was, or when the server's download-links document cannot be
    /// had or used: also, with nothing run or read, when /tmp/downloadlinks.xml is a link, a pipe,
    /// a file with more than one link or somebody else's. False without a line when no file is
    /// named. What reaches the shell unquoted: `targetDir` and the names; between double quotes:
    /// the document's base address, `serial`. A library built with THERMIKA_REFUSE_SHELL_TEXT
    /// refuses, with a line in the log, any base, name and directory that means something to a
    /// shell, and a directory that begins with "-".
    /// Process: writes and removes /tmp/downloadlinks.xml (it stays when it cannot be read);
    /// LC_NUMERIC is "C" afterwards; flushes standard output before each command; descriptors 0, 1
    /// and 2 are /dev/null while a command runs where they are closed.
    static bool downloadTarget(char* targets, std::string serial, std::string targetDir);

    /// Copies what is named like a file of camera `serial` (or of one whose number begins with it)
    /// anywhere below `sourceDir` into the calibration directory, over what is there, by running
    /// find and cp; blocks meanwhile. The directory must exist: cp writes a file of its name
    /// otherwise. True when nothing is missing afterwards; false also when the command could not be
    /// started, without a look at what is there. Both directories reach the shell unquoted: one
    /// with blanks becomes several arguments; so do the name patterns, which the shell may expand
    /// in the working directory.
    /// A library built with THERMIKA_REFUSE_SHELL_TEXT answers false, without a command or a line,
    /// when one of the two means something to a shell or begins with "-".
    /// Process: prints the command on standard output and flushes it; descriptors 0 to 2 as in
    /// downloadTarget(); as checkCaliFiles(), which may end the process.
    bool copyCalibrationFromLocalRepo(unsigned long serial, std::string sourceDir);

    /// Whether the host has a default IPv4 route, by running /sbin/route and grep; nothing is
    /// contacted. False also when that cannot be found out.
    /// Process: flushes standard output; what the two complain about goes to standard error;
    /// descriptors 0 to 2 as in downloadTarget().
    bool isOnlineCalibrationRepoAccessible();

    /// The optics of camera `serial` in the description's order, loading it when another or none is
    /// loaded; 0 gives the list of the previous call. Optics of the same field of view and text all
    /// show the ranges of the first. The list stays ours and is rebuilt by the next call. It is
    /// empty when no description was ever loaded; after a failed load it shows what ConfigCali then
    /// holds. An allocation failure propagates and leaves it empty, or as it was when loading ran
    /// out of memory.
    /// Process: loads as checkCaliFiles() does, so it may end the process, creates the calibration
    /// directory when it is missing and changes LC_NUMERIC.
    std::vector<OpticsEntry>* getAvailableOptics(unsigned long serial);

private:
    std::unique_ptr<char[]> m_calibrationDir;
    std::unique_ptr<char[]> m_formatsDir;
    std::unique_ptr<std::vector<OpticsEntry>> m_availableOptics;

    static IRCalibrationManager* _this;

    std::size_t readable(const char* dir) const;
    std::string calibrationDir() const;
};

/// Adds the file name that `format` makes of `name`, and ";", to the list of missing files when
/// `directory` has no such file that can be opened for reading. `missing` and `size` as for
/// IRCalibrationManager::checkCaliFiles(); a buffer holds a terminated text already.
/// Process: creates the directory, one level, and the manager when there is none; loads nothing.
void _checkCaliFilesHelper(const char* directory, char* name, const char* format, char* missing,
                           int* size);

}  // namespace dax

// What every window asks of the program: open and create ts-files, report failures, start sub-programs.
//
// A mix-in of the main window, which sub-programs reach through instance(). It holds no data: what it
// answers is kept by the window that derives from it.
#pragma once

#include <QString>

#include <cstdint>
#include <functional>

class QWidget;
class TSFILE;
struct PsParameters;

// The sub-programs that openSubProgram() can start.
enum class SubProgram {
    Create,
    StlImport,
    SclImport,
    Plot,
    PlotColumn,
    List,
    Edit,
    Header,
    Formula,
    Derivative,
    Integral,
    Spectrum,
    Filter
};

class TsApplication
{
public:
    // Shows a composed report. Empty here, and kept so by the main window on purpose: a caller sees only
    // the null result of OpenTs() and CreateTs() and says in its own words what could not be done.
    virtual void ShowTsMessage(const QString& text);
    // Shows an error text; empty here.
    virtual void ShowTsError(const char* text);
    // To be called inside a catch block: composes a report of the exception in flight, with ": " and
    // `where` behind it, and hands it to ShowTsMessage().
    virtual void ReportTsException(const char* where);

    // The registry of files that are open for writing in a window; paths are made absolute. Whoever is
    // about to rebuild, remove or overwrite a file asks first.
    virtual void registerWriter(const QString& path);
    virtual void unregisterWriter(const QString& path);
    virtual bool isOpenForWriting(const QString& path) const;
    // Why a file of the user's may not be renamed or removed now: a window has it open for writing. Empty
    // where it may.
    static QString refusalToMove(const QString& path);
    // Why it may not be changed or replaced: as above, or its rights protect it.
    static QString refusalToWrite(const QString& path);

    // Starts a sub-program on a file and, where it takes one, a column (from 1; 0 for none), and returns
    // its window, or null where there is none. The window deletes itself when it is closed.
    virtual QWidget* openSubProgram(SubProgram kind, const QString& file, unsigned column);
    // Asks for a name and writes samples first to last of a file as tsa text; false where nothing was
    // written.
    virtual bool exportInterval(const QString& file, std::uint32_t first, std::uint32_t last);
    // The settings that a new plot window starts from; null without a main window.
    virtual const PsParameters* psParameters() const;

    // Opens the file of exactly that name; a name without ".ts" that no file bears means the file that
    // CreateTs() makes of it. Returns null, after ReportTsException(), where it fails. The caller owns the
    // file.
    TSFILE* OpenTs(const QString& name, bool readOnly);
    // Creates name + ".ts" (a name of digits alone: the numbered file) without time columns. Asks before
    // it replaces an old file of that name, which goes only when the new one is whole. Null where the user
    // keeps the old one or creation fails; what was begun is removed then.
    TSFILE* CreateTs(const QString& name, unsigned samples, unsigned columns);
    // As above, for a file that is whole only with what `fill` writes into it. What `fill` throws counts as a
    // failed creation.
    TSFILE* CreateTs(const QString& name, unsigned samples, unsigned columns,
                     const std::function<void(TSFILE& file)>& fill);

    // The main window's side, or null before it is built and in programs without one.
    static TsApplication* instance() noexcept { return s_instance; }

protected:
    TsApplication() = default;
    ~TsApplication();
    TsApplication(const TsApplication&) = delete;
    TsApplication& operator=(const TsApplication&) = delete;

    // From then on the application also hears what is reported without a window, as ShowTsError().
    static void setInstance(TsApplication* application) noexcept;

private:
    inline static TsApplication* s_instance = nullptr;
};

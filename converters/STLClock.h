// The times of a smart tool log's rows, as its cells tell them.
#pragma once

#include <array>
#include <limits>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "converters/DateSteps.h"
#include "converters/STLFormat.h"
#include "converters/STLTimeText.h"

namespace veltrac {

// The cells of a column of dates. Most rows bear the date of the row before.
class DateCells
{
public:
    explicit DateCells(DateOrder order) : m_order(order) {}

    // Midnight of a cell's date; nothing where it is none.
    std::optional<Micros> midnightOf(std::string_view cell);
    // The same of a date that has been read from this text.
    std::optional<Micros> midnightOf(const DateParts& date, std::string_view text);

    // True where a date cannot be read in this order of day and month, but in the other one; and where one
    // can be read in this order alone.
    bool contradictsOrder() const { return m_contradictsOrder; }
    bool provesOrder() const { return m_provesOrder; }
    // The dates whose order of day and month no date tells.
    const DateSteps& steps() const { return m_steps; }

private:
    bool isLast(std::string_view text) const;

    DateOrder m_order;
    bool m_contradictsOrder = false;
    bool m_provesOrder = false;
    DateSteps m_steps;
    std::array<char, 16> m_last = {};
    std::size_t m_lastSize = 0;
    Micros m_lastMidnight = 0;
};

// Follows a local clock that is set within a log. In autumn it is set back, and the log shows an hour twice;
// in spring an hour is left out. Where the rows run back by less than an hour, or step by an hour more or
// less than before, and the zone's clock was set just then, their order tells the time.
class ClockChanges
{
public:
    void begin(Micros wall) { m_last = wall; }
    // The next row's time on the wall clock.
    void follow(Micros wall, bool mayBeSet);

    // By how much the clock has been set back (or forward, below 0) since the first row, and how often.
    Micros shift() const { return m_shift; }
    std::uint64_t count() const { return m_count; }

private:
    void judge(Micros wall);

    Micros m_last = 0;
    Micros m_lastStep = 0;
    Micros m_shift = 0;
    std::uint64_t m_count = 0;
};

// How far rows on the local clock lie from equal steps where it is set and they do not show it, in seconds.
struct ClockLag
{
    double first = 0.0;  // of the first row in time
    double least = 0.0;
    double most = 0.0;
    // How often it was set within the log, as the order of the rows tells.
    std::uint64_t changes = 0;
    bool ranOn = false;  // rows lie in an hour that the local clock left out: theirs is another one
};

// Instants of the local clock. It is asked once a day, since on most days it is not set.
class LocalDays
{
public:
    // The first row's place on the wall clock.
    void begin(Micros wall);
    // A further one's, and the time since the first one by what the rows tell.
    void follow(Micros wall, Micros since);

    // How far the last row lies behind the clock's instant, in seconds; of two instants the nearer one
    // counts.
    double lag() const { return m_lag; }
    // Whether the clock never showed its time.
    bool isSkipped() const { return m_isSkipped; }

private:
    Micros instantOf(Micros wall, Micros expected);

    Micros m_from = 0;  // a day on which it is not set
    Micros m_to = 0;
    Micros m_offset = 0;
    Micros m_first = 0;  // the first row's instant
    double m_lag = 0.0;
    bool m_isSkipped = false;
};

class STLClock
{
public:
    // Borrows the format.
    explicit STLClock(const STLFormat& format);

    // Seconds of a row since the first one; nothing where its time cannot be read.
    std::optional<double> read(std::span<const std::string_view> cells);
    // The same where reader() has read the cells.
    std::optional<double> read(std::span<const std::string_view> cells, const STLTimeText& told);
    // For use on any thread.
    const STLTimeReader& reader() const { return m_reader; }
    // The column at which it could not be read.
    int unreadable() const { return m_unreadable; }

    // The first row's place on the wall clock, or its number of seconds (elapsed times).
    Micros firstWall() const { return m_firstWall; }
    double firstSeconds() const { return m_firstSeconds; }
    // How finely the rows tell their time, in seconds, as far as they have been read.
    double resolution() const { return m_resolution; }
    // How far the present row lies behind the local clock's instant, in seconds; and whether that clock never
    // showed its time.
    double lag() const { return m_local.lag(); }
    bool isSkipped() const { return m_local.isSkipped(); }
    // Whether a stamp has named its zone.
    bool zoned() const { return m_zoned; }
    const DateCells& dates() const { return m_dates; }
    const ClockChanges& changes() const { return m_changes; }

private:
    std::optional<double> secondsOf(std::span<const std::string_view> cells, const STLTimeText& told);
    std::optional<double> sinceFirst(std::optional<Micros> wall);
    std::optional<Micros> stampAt(std::string_view cell, const STLTimeText& told);
    std::optional<Micros> rareStamp(std::string_view cell, std::optional<Micros> day);
    std::optional<Micros> dayAt(std::string_view cell);
    std::optional<Micros> partsOf(std::span<const std::string_view> cells);
    double numberAt(std::string_view cell, const STLTimeText& told);
    bool tailAt(std::string_view cell, Micros& micros);
    Micros elapsed(const STLTimeText& told);
    std::optional<int> partAt(std::span<const std::string_view> cells, STLDatePart which, int least, int most,
                              int otherwise);
    std::optional<Micros> clockOf(std::span<const std::string_view> cells);

    const STLFormat& m_format;
    STLTimeReader m_reader;
    DateCells m_dates;
    ClockChanges m_changes;
    int m_unreadable = -1;
    Micros m_days = 0;  // midnights that times of day have passed
    Micros m_lastTime = 0;
    bool m_hasFirst = false;
    Micros m_firstWall = 0;
    double m_firstSeconds = 0.0;
    double m_firstNumber = 0.0;
    std::optional<std::int64_t> m_firstTicks;  // of nanoseconds, where it has no decimals
    double m_resolution = std::numeric_limits<double>::infinity();
    bool m_zoned = false;
    LocalDays m_local;
};

}  // namespace veltrac

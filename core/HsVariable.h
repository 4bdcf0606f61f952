// A variable that answers for any run of its samples at once, however long: it keeps a pyramid of them.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "core/Progress.h"
#include "core/Pyramid.h"
#include "core/Variable.h"

class HsVariable
{
public:
    explicit HsVariable(Variable variable) : m_variable(std::move(variable)) {}

    Variable& variable() noexcept { return m_variable; }
    const Variable& variable() const noexcept { return m_variable; }

    // Reads the samples once. After a failure of the file, failure() tells it and the variable shows
    // nothing; after a cancel the variable is as before.
    veltrac::JobOutcome build(const veltrac::Progress& progress);
    // The same for many variables in one pass a source, row by row.
    static veltrac::JobOutcome buildAll(std::span<const std::shared_ptr<HsVariable>> variables,
                                        const veltrac::Progress& progress);
    // The source has got rows behind row `before`, which the variables on it that are built take in: only
    // those rows are read, and what stands before them in their bucket. Throws the TS exceptions; the
    // variables have to be forgotten then.
    static void extendAll(std::span<const std::shared_ptr<HsVariable>> variables, veltrac::PlotSource& source,
                          std::uint32_t before);
    // Forgets buckets of a source at its beginning, whose rows are gone, here and in the source.
    static void forgetBuckets(std::span<const std::shared_ptr<HsVariable>> variables,
                              veltrac::PlotSource& source, std::uint32_t buckets);
    // False until build(), and again after forget() or when a log axis needs the values above 0 alone.
    bool isBuilt() const;
    // The source was loaded again.
    void forget();
    // On a logarithmic axis values that are not above 0 count as missing.
    void setLogarithmic(bool on) noexcept { m_logarithmic = on; }

    // Why there is nothing to show; empty where all is well. UTF-8 apart from file names.
    const std::string& failure() const noexcept { return m_failure; }
    void setFailure(std::string text) { m_failure = std::move(text); }

    // The answers below are about rows first to last (from 1, both included, both within rows()), in shown
    // values, and exact: whole buckets come from the pyramid and the loose ends from the samples. They
    // need isBuilt() and throw the TS exceptions where the loose ends cannot be read.
    struct Range
    {
        double least = 0.0;
        double greatest = 0.0;
        bool empty = true;  // no finite value in it
    };
    Range range(std::uint32_t first, std::uint32_t last) const;
    // The same of rows whose loose ends have been looked at: a picture does so for all variables of a source
    // at once. Not where a log axis takes the values above 0 alone.
    Range range(const veltrac::PlotSource::Pieces& rows, const veltrac::Extremes& looseEnds) const;
    bool takesAll() const { return !usesPositive(); }

    struct Statistics
    {
        double least = 0.0;
        double greatest = 0.0;
        double mean = 0.0;
        double rms = 0.0;
        double deviation = 0.0;  // standard deviation, of n - 1; 0 for a single value
        std::uint32_t count = 0;
        std::uint32_t missing = 0;
    };
    Statistics statistics(std::uint32_t first, std::uint32_t last) const;
    // Values that are finite and yet missing, because a logarithmic axis cannot show them.
    std::uint32_t notPositive(std::uint32_t first, std::uint32_t last) const;

    // The row of the greatest (or least) shown value; 0 where there is no finite value.
    std::uint32_t rowOfExtreme(std::uint32_t first, std::uint32_t last, bool greatest) const;

private:
    // Which values of the source the pyramid was made of.
    struct Made
    {
        bool built = false;
        bool positiveOnly = false;
        double gain = 1.0;
        double offset = 0.0;
    };
    class Pass;

    void extend(std::uint32_t firstBucket, const float* values, std::size_t stride, std::size_t rows);
    bool needsPositive() const;
    bool counts(float raw) const;
    using Piece = veltrac::PlotSource::Piece;
    void takeLooseEnd(const Piece& piece, bool positiveOnly, veltrac::Extremes& into) const;
    void takeLooseEnd(const Piece& piece, bool positiveOnly, veltrac::Summary& into) const;
    // The values above 0 among those of a piece.
    veltrac::Summary positiveOf(const veltrac::PlotSource::Run& run, const Piece& piece) const;
    // What is wanted of rows first to last: Extremes or a Summary.
    template <typename Wanted>
    Wanted collect(std::uint32_t first, std::uint32_t last) const;
    template <typename Wanted>
    Wanted collectFrom(const veltrac::Pyramid& pyramid, bool positiveOnly, std::uint32_t first,
                       std::uint32_t last) const;
    bool usesPositive() const { return m_logarithmic && needsPositive(); }
    Range shown(const veltrac::Extremes& raw) const;

    Variable m_variable;
    veltrac::Pyramid m_all;
    veltrac::Pyramid m_positive;  // only made where a log axis needs it
    Made m_madeAll;
    Made m_madePositive;
    std::string m_failure;
    bool m_logarithmic = false;
};

// The rows of a log as the first pass read them, so that the second one need not read the text again.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace veltrac {

class STLKeptRows
{
public:
    // What is kept at most; of a longer log nothing is.
    static constexpr std::size_t kMostBytes = std::size_t{192} << 20;

    // `columns`: values a row.
    explicit STLKeptRows(std::size_t columns) : m_columns(columns) {}

    // `lag`: by how much the local clock's reading of the row lies off its time, in seconds.
    void add(double seconds, double lag, std::span<const float> values);
    // Whether all rows that were added are still there.
    bool isWhole() const noexcept { return m_isWhole; }

    struct Row
    {
        double seconds;
        double lag;
        std::span<const float> values;
    };
    std::size_t size() const noexcept;
    // From 0 on, where all are there.
    Row row(std::size_t index) const;

    // The values of all rows in turn: pieces of whole rows, from 0 on.
    std::size_t pieces() const noexcept { return m_pieces.size(); }
    std::span<const float> piece(std::size_t index) const { return m_pieces[index].values; }

private:
    // Rows a piece; pieces that are full stay where they are.
    static constexpr std::size_t kPieceRows = 4096;
    struct Piece
    {
        std::vector<double> seconds;
        std::vector<float> lags;
        std::vector<float> values;
    };

    std::size_t m_columns;
    std::vector<Piece> m_pieces;
    bool m_isWhole = true;
};

}  // namespace veltrac

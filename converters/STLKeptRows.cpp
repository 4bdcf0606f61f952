#include "converters/STLKeptRows.h"

namespace veltrac {

void STLKeptRows::add(double seconds, double lag, std::span<const float> values)
{
    if (!m_isWhole)
        return;
    if (m_pieces.empty() || m_pieces.back().seconds.size() == kPieceRows) {
        const std::size_t bytes = kPieceRows * (sizeof(double) + sizeof(float) * (m_columns + 1));
        if ((m_pieces.size() + 1) * bytes > kMostBytes) {
            m_pieces = {};
            m_isWhole = false;
            return;
        }
        Piece& piece = m_pieces.emplace_back();
        piece.seconds.reserve(kPieceRows);
        piece.lags.reserve(kPieceRows);
        piece.values.reserve(kPieceRows * m_columns);
    }
    Piece& piece = m_pieces.back();
    piece.seconds.push_back(seconds);
    piece.lags.push_back(static_cast<float>(lag));
    piece.values.insert(piece.values.end(), values.begin(), values.end());
}

std::size_t STLKeptRows::size() const noexcept
{
    return m_pieces.empty() ? 0 : (m_pieces.size() - 1) * kPieceRows + m_pieces.back().seconds.size();
}

STLKeptRows::Row STLKeptRows::row(std::size_t index) const
{
    const Piece& piece = m_pieces[index / kPieceRows];
    const std::size_t at = index % kPieceRows;
    return {piece.seconds[at], static_cast<double>(piece.lags[at]),
            std::span(piece.values).subspan(at * m_columns, m_columns)};
}

}  // namespace veltrac

#pragma once

#include <kescorexml/XMLFormatter.h>

#include <vector>

/// Keeps every piece that reaches the sink.
class RecordingFormatter : public XMLFormatter
{
public:
    explicit RecordingFormatter(const TString& indentUnit = u"  ", bool suppressNewlines = false)
        : XMLFormatter(indentUnit, suppressNewlines)
    {
    }

    void OutputString(const TString& text) override { m_pieces.push_back(text); }

    const std::vector<TString>& GetPieces() const noexcept { return m_pieces; }
    std::vector<TString> TakePieces() { return std::exchange(m_pieces, {}); }
    TString GetText() const
    {
        TString text;
        for (const TString& piece : m_pieces)
            text += piece;
        return text;
    }

private:
    std::vector<TString> m_pieces;
};

#include "Targets.h"

#include "support/Base64Model.h"
#include "support/Require.h"

#include <kescorexml/Base64.h>

#include <QByteArray>
#include <QRegularExpression>

#include <algorithm>

namespace {

using Vector = std::vector<unsigned char>;

void RequireEncoding(const Vector& bytes)
{
    const auto count = static_cast<unsigned int>(bytes.size());
    std::vector<TString> whole;
    Base64Encode(bytes.data(), count, whole, false);
    std::vector<TString> lines;
    Base64Encode(bytes.data(), count, lines, true);

    const QByteArray array(reinterpret_cast<const char*>(bytes.data()),
                           static_cast<qsizetype>(bytes.size()));
    const TString expected = QString::fromLatin1(array.toBase64());
    Require(whole.size() == (bytes.empty() ? 0 : 1), "bytes make one line, no bytes none");
    Require(bytes.empty() || whole[0] == expected, "bytes are encoded as Qt does");
    TString joined;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        Require(i + 1 == lines.size() ? !lines[i].IsEmpty() && lines[i].length() <= 72
                                      : lines[i].length() == 72,
                "every line but the last has 72 characters");
        joined += lines[i];
    }
    Require(joined == expected, "lines are pieces of the encoding");
    Require(IsBase64(joined), "an encoding is strict Base64");
    Require(Base64Decode(joined) == bytes, "an encoding is decoded to what it was made of");
}

void RequireDecoding(const TString& text)
{
    Require(Base64Decode(text) == Base64Model::Decode(text), "a text is decoded as the model does");
    static const QRegularExpression s_strict(QRegularExpression::anchoredPattern(
        QStringLiteral("^([A-Za-z0-9+/]{4})*([A-Za-z0-9+/]{3}=|[A-Za-z0-9+/]{2}==)?$")));
    // Longer texts meet a limit of the expression engine.
    if (text.length() <= 4000)
        Require(IsBase64(text) ==
                    (text.length() % 4 == 0 && s_strict.match(QString(text)).hasMatch()),
                "strict Base64 is what the expression matches");
}

} // namespace

/// Encodes the bytes, and decodes them as Latin-1 and as UTF-16.
void FuzzTargets::Base64(Bytes bytes)
{
    RequireEncoding(Vector(bytes.begin(), bytes.end()));
    RequireDecoding(TString(std::u16string(bytes.begin(), bytes.end())));
    std::u16string units;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
        units += static_cast<char16_t>(bytes[i] << 8 | bytes[i + 1]);
    RequireDecoding(TString(units));
}

#include "values/Base64Encoding.h"

#include "support/GuardedString.h"
#include "support/RandomBytes.h"

#include <QByteArray>
#include <QString>

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

using Encoder = void (*)(const unsigned char*, std::size_t, std::size_t, char16_t*);

class Base64EncodingOn : public testing::TestWithParam<Encoder>
{
protected:
    /// What is made of the first `count` of `bytes`, all of which may be read.
    static QString Encode(std::string_view bytes, std::size_t count)
    {
        // Not a unit more is written than the encoding has.
        std::u16string units((count + 2) / 3 * 4 + 1, u'!');
        GetParam()(reinterpret_cast<const unsigned char*>(bytes.data()), count, bytes.size(),
                   units.data());
        EXPECT_EQ(units.back(), u'!');
        units.pop_back();
        return QString::fromStdU16String(units);
    }
};

std::string MakeBytes(std::size_t count)
{
    RandomBytes random(7);
    std::string bytes(count, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random.Below(256));
    return bytes;
}

} // namespace

TEST_P(Base64EncodingOn, MakesOfEachLengthWhatQtDoes)
{
    const std::string bytes = MakeBytes(130);
    for (std::size_t count = 0; count <= bytes.size(); ++count) {
        const QByteArray array(bytes.data(), static_cast<qsizetype>(count));
        const QString expected = QString::fromLatin1(array.toBase64());
        ASSERT_EQ(Encode(std::string_view(bytes).substr(0, count), count), expected) << count;
        ASSERT_EQ(Encode(bytes, count), expected) << count << " with more behind them";
    }
}

TEST_P(Base64EncodingOn, ReadsNothingBehindWhatMayBeRead)
{
    const std::string bytes = MakeBytes(130);
    for (std::size_t count = 0; count <= bytes.size(); ++count) {
        const GuardedBytes guarded(count, GuardedBytes::Place::End);
        bytes.copy(guarded.Get(), count);
        ASSERT_EQ(Encode({guarded.Get(), count}, count), Encode(bytes, count)) << count;
    }
}

TEST_P(Base64EncodingOn, KnowsEachSixBitsAtEachPlace)
{
    for (std::size_t place = 0; place < 32; ++place) {
        for (unsigned value = 0; value < 64; ++value) {
            std::string bytes(24, '\0');
            // Big-endian: six bits from bit 6 * place on, in one byte or two.
            const std::size_t bit = 6 * place;
            const unsigned shifted = value << (10 - bit % 8);
            bytes[bit / 8] = static_cast<char>(shifted >> 8);
            if (bit / 8 + 1 < bytes.size())
                bytes[bit / 8 + 1] = static_cast<char>(shifted);
            std::u16string expected(32, u'A');
            expected[place] = static_cast<char16_t>(Base64Encoding::c_alphabet[value]);
            bytes += "more to be read";
            ASSERT_EQ(Encode(bytes, 24), QString::fromStdU16String(expected)) << value;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Processors, Base64EncodingOn,
                         testing::Values(&Base64Encoding::Encode, &Base64Encoding::EncodePortably),
                         [](const testing::TestParamInfo<Encoder>& encoder) {
                             return encoder.index == 0 ? "This" : "Any";
                         });

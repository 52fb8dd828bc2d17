#pragma once

#include <kescorexml/DOMElement.h>
#include <kesplatform/TString.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

/// Texts and trees with everything in them that a writer has to mind.
class RandomTree
{
public:
    explicit RandomTree(unsigned seed) : m_random(seed) {}

    std::size_t Below(std::size_t end)
    {
        return std::uniform_int_distribution<std::size_t>(0, end - 1)(m_random);
    }

    TString Text(std::size_t maxLength)
    {
        static constexpr std::u16string_view c_alphabet =
            u"abcdefghijklmnopqrstuvwxyz0123456789 \t\n\r<>&'\"]-\u0001\u001F\u0080\u0081\u20AC"
            u"\xD83D\xDE00\xFFFD\xFFFE\xFFFF";
        // Mostly plain text, so that clean runs of every length come up.
        const std::size_t spread = Below(4) == 0 ? c_alphabet.size() : 36;
        std::u16string text(Below(maxLength + 1), u'\0');
        for (char16_t& unit : text)
            unit = c_alphabet[Below(8) == 0 ? Below(c_alphabet.size()) : Below(spread)];
        if (Below(8) == 0)
            text += u"]]>";
        if (Below(8) == 0)
            text = u"\"" + text + u"\"";
        if (Below(16) == 0)
            text += u'\n';
        return TString(text);
    }

    TString Name()
    {
        static constexpr std::u16string_view c_letters = u"abcdefghij";
        std::u16string name(1 + Below(20), u'\0');
        for (char16_t& unit : name)
            unit = c_letters[Below(c_letters.size())];
        return TString(name);
    }

    std::unique_ptr<DOMElement> Tree(std::size_t elements)
    {
        auto root = std::make_unique<DOMElement>(Name());
        std::vector<DOMElement*> all{root.get()};
        Furnish(*root);
        while (all.size() < elements) {
            DOMElement* parent = all[Below(2) == 0 ? all.size() - 1 : Below(all.size())];
            all.push_back(parent->AddNewChild(Name(), nullptr));
            Furnish(*all.back());
        }
        return root;
    }

private:
    void Furnish(DOMElement& element)
    {
        for (std::size_t i = Below(3) == 0 ? Below(24) : Below(4); i > 0; --i)
            element.SetAttribute(Name(), Text(Below(10) == 0 ? 3000 : 40));
        if (Below(2) == 0)
            element.SetText(Text(Below(10) == 0 ? 3000 : 60), Below(5) == 0);
    }

    std::mt19937 m_random;
};

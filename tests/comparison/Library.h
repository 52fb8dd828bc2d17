#pragma once

#include <memory>
#include <string>

/// What a library makes of a small document for each row of the table in the README. The answers
/// are the texts of the cells; each comes from running the library.
class Library
{
public:
    Library() = default;
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    virtual ~Library() = default;

    /// Where an element stood, asked of the tree.
    virtual std::string PositionOfElement() = 0;
    virtual std::string TreeOfBrokenDocument() = 0;
    virtual std::string SchemaValidation() = 0;
    /// Of an entity that the document defines, with the settings that a parser begins with.
    virtual std::string EntityOfDocument() = 0;
    /// Of an entity that is the content of a file, which is "secret", with these settings.
    virtual std::string EntityOfFile(const std::string& path) = 0;
    virtual std::string TextBetweenElements() = 0;
    virtual std::string Comments() = 0;
    virtual std::string Queries() = 0;
    virtual std::string Html() = 0;
    virtual std::string TextUnits() = 0;

    /// The tree of a document; null when it is refused. `isHuge` says that a limit on the depth,
    /// where it is a matter of a setting, is to be lifted.
    virtual std::shared_ptr<void> Parse(const std::string& document, bool isHuge) = 0;
    /// What lifts that limit, if anything does.
    virtual std::string HugeSetting() { return {}; }
};

std::unique_ptr<Library> MakeKescorexml();
std::unique_ptr<Library> MakePugixml();
std::unique_ptr<Library> MakeLibxml2();
std::unique_ptr<Library> MakeQtXml();
std::unique_ptr<Library> MakeXercesDom();

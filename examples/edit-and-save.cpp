// Changes a document and saves it: dates it, adds a station, removes the notes.
//
//     edit-and-save FILE NEWFILE

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/DOMPath.h>
#include <kescorexml/XMLDomFormatter.h>

#include <fstream>
#include <iostream>

namespace {

void Edit(DOMElement& network)
{
    network.SetAttribute(u"updated", u"2024-04-01");

    DOMElement& station = *network.AddNewChild(u"station");
    station.SetAttributes({{u"id", u"C3"}, {u"name", u"Zürich <roof>"}});
    DOMElement& sensor = *station.AddNewChild(u"sensor");
    sensor.SetAttribute(u"kind", u"rain");
    sensor.SetText(u"new");

    // Foreach finds all matches before it calls, so the tree may change under it.
    DOMPath::Foreach(network, u"stations/station/note",
                     [](DOMElement& note) { note.GetParent()->RemoveChild(note); });
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "Usage: edit-and-save FILE NEWFILE\n";
        return 2;
    }
    const DOMParser parser;
    const std::unique_ptr<DOM> document = parser.ParseXmlFile(argv[1]);
    if (document->HasErrors()) {
        std::cerr << document->GetConcatenatedErrors() << '\n';
        return 1;
    }
    Edit(*document->GetDocumentRoot());

    TString comment(u"Written by edit-and-save");
    std::ofstream file(argv[2], std::ios::binary);
    file << XMLDomFormatter::RenderAsXMLString(*document, &comment, true);
    file.close();
    if (!file) {
        std::cerr << argv[2] << " cannot be written\n";
        return 1;
    }
    return 0;
}

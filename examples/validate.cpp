// Checks a document against an XML Schema.
//
//     validate SCHEMA FILE

#include <kescorexml/DOM.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/InputSourceUtils.h>
#include <kesplatform/CorvinaException.h>

#include <iostream>

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "Usage: validate SCHEMA FILE\n";
        return 2;
    }
    try {
        DOMParser parser;
        parser.AddXSDInputSource(InputSourceUtils::InputSourceFromFileName(argv[1], false));
        const std::unique_ptr<DOM> document = parser.ParseXmlFile(argv[2]);

        // What is wrong with the schema itself stands among the errors, too.
        for (const TString& error : document->GetErrors())
            std::cout << error << '\n';
        if (document->HasErrors())
            return 1;
        std::cout << argv[2] << " is valid\n";
        return 0;
    } catch (const CorvinaException& e) {
        std::cerr << e.what() << '\n';
        return 2;
    }
}

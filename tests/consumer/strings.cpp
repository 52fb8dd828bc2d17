#include <kesplatform/TString.h>

#include <iostream>
#include <string>

int main()
{
    const TString text = std::string("te") + TString(u"xt");
    std::cout << (text == "text" ? text.length() : 0) << '\n';
}

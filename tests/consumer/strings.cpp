#include <kesplatform/TString.h>

#include <iostream>

int main()
{
    std::cout << TString(u"text").length() << '\n';
}

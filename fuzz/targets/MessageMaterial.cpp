#include "fuzz/targets/MessageMaterial.h"

namespace fuzz {
namespace {

constexpr UnitsView kDelimiter = L"###@@@###";

} // namespace

Material MessageMaterial() {
    Material material = XmlMaterial("fuzz/corpus/message");
    for (Units& exchanged : ReadCorpus("tests/plugin-link/data")) {
        material.corpus.push_back(exchanged.substr(0, exchanged.find(kDelimiter)));
    }
    AddTokens(material, L"###@@@### | # | @ | Msg | </Msg> | <Msg version=\"1\" type=\"Response\" pid=\"1\"> | "
                        L" version=\"1\" |  type=\"Error\" |  pid=\"0xFFFFFFFF\" | Request | Response | Error | Test");
    AddTokens(material, L"Key | <Key | </Key> | <Key name=\"Result\" type=\"int\" size=\"2\" hidden=\"0\"> | "
                        L" name=\"Result\" |  size=\"4294967296\" |  hidden=\"1\" | Result | Param | int | string | "
                        L"byte[] | QUJDRA== | -2147483649");
    return material;
}

} // namespace fuzz

#include "embedded/output/Sha256.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/CaseName.h"

namespace embedded {
namespace {

struct HashCase {
    const char* fName;
    std::string fText;
    const char* fExpected;
};

class Sha256Of : public testing::TestWithParam<HashCase> {};

TEST_P(Sha256Of, Text) { EXPECT_EQ(Sha256Base64(GetParam().fText), GetParam().fExpected); }

// The first three: examples of NIST for FIPS 180-4; the others, at the edges of a block, made with
// OpenSSL 3.0.
INSTANTIATE_TEST_SUITE_P(
    Vectors, Sha256Of,
    testing::Values(
        HashCase{"Abc", "abc", "ungWv48Bz+pBQUDeXa4iI7ADYaOWF3qctBD/YfIAFa0="},
        HashCase{"TwoBlocks", "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
                 "JI1qYdIGOLjlwCaTDD5gOaM85Flk/yFn9uzt1BnbBsE="},
        HashCase{"AMillionLetters", std::string(1000000, 'a'),
                 "zcduXJkU+5KBocfihNc+Z/GAmkiklyAOBG05zMcRLNA="},
        HashCase{"Nothing", std::string(0, 'x'), "47DEQpj8HBSa+/TImW+5JCeuQeRkm5NMpJWZG3hSuFU="},
        HashCase{"FiftyFiveBytes", std::string(55, 'x'),
                 "1eKFaDzU78AtAhpcYgFGlJWJAQBdb3HongmJ+sd+QHI="},
        HashCase{"FiftySixBytes", std::string(56, 'x'),
                 "BMJiYTcO51QVSdFt7jIMcj4/0UZx5moJmv4KN3wWiI4="},
        HashCase{"SixtyThreeBytes", std::string(63, 'x'),
                 "dSILRyGCeOZW8gE7uPDEVaJerwHobGSSTp1I2Jd21vI="},
        HashCase{"SixtyFourBytes", std::string(64, 'x'),
                 "fOEAlx9k5wAej+WlGXPs3+HO1Cvv5+6NX9YhlQa1OTw="}),
    testsupport::CaseName());

}  // namespace
}  // namespace embedded

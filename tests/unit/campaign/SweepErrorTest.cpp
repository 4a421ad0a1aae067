#include "Platform/ConfigurationError.h"
#include "Unit/Campaign/SweepDefinition.h"

#include <gmock/gmock.h>

#include <ostream>

using testing::HasSubstr;
using testing::StartsWith;

namespace
{
/** A sweep file that is refused. GRID and RANDOM stand for a complete [sweep] of four lines, P for [[parameter]] path.
 */
struct BadSweep
{
    const char* pWhat;
    const char* pText;
    const char* pPlace; /**< line, and column where it matters */
    const char* pError;
};

const BadSweep BAD_SWEEPS[] = {
    {"Empty", "", ":1", "has no table [sweep]; add it with scenario and method"},
    {"NotToml", "[sweep\n", ":1:7", "is not TOML"},
    {"UnknownTable", "GRID[parameters]\n", ":5", "unknown key \"parameters\""},
    {"UnknownKey", "GRIDworkers = 3\n", ":5", "unknown key \"workers\" in [sweep]"},
    {"NoScenario", "[sweep]\nmethod = \"grid\"\n", ":1", "[sweep] has no key scenario"},
    {"NoMethod", "[sweep]\nscenario = \"s\"\n", ":1", "[sweep] has no key method"},
    {"UnknownMethod", "[sweep]\nscenario = \"s\"\nmethod = \"all\"\n", ":3",
     "method in [sweep] is \"all\"; it must be \"grid\" or \"random\""},
    {"RandomWithoutRuns", "[sweep]\nscenario = \"s\"\nmethod = \"random\"\n", ":1", "[sweep] has no key runs"},
    {"RandomWithRepeats", "RANDOMrepeats = 3\n", ":5", "repeats in [sweep] goes with method = \"grid\""},
    {"GridWithRuns", "GRIDruns = 3\n", ":5", "runs in [sweep] goes with method = \"random\""},
    {"NoRuns", "[sweep]\nscenario = \"s\"\nmethod = \"random\"\nruns = 0\n", ":4", "runs in [sweep] "},
    {"NegativeSeed", "GRIDseed = -1\n", ":5", "seed in [sweep] "},
    {"NoDuration", "GRIDduration_s = 0\n", ":5", "duration_s in [sweep] "},
    {"UnknownMeasure", "GRIDmeasures = [\"speed\"]\n", ":5",
     "measures in [sweep] has \"speed\"; the measures are steps,"},
    {"MeasuresNotAList", "GRIDmeasures = \"steps\"\n", ":5", "measures in [sweep] must be a list"},
    {"NoParameter", "GRID", ":1", "varies nothing; add [[parameter]] tables"},
    {"NoPath", "GRID[[parameter]]\nvalues = [1]\n", ":5", "[[parameter]] has no key path"},
    {"PathWithBlank", "GRIDP = \"a b\"\nvalues = [1]\n", ":6",
     "path in [[parameter]] is \"a b\"; it must be a key's place"},
    {"PathWithAControlCharacter", "GRIDP = \"a\\u001bb\"\nvalues = [1]\n", ":6",
     "path in [[parameter]] is \"a?b\"; it must be a key's place"},
    {"PathIsSeed", "GRIDP = \"seed\"\nvalues = [1]\n", ":6", "path in [[parameter]] is \"seed\", which every run has"},
    {"DurationTwice", "GRIDduration_s = 3\nP = \"duration_s\"\nvalues = [1]\n", ":7", "which [sweep] sets already"},
    {"PathTwice", "GRIDP = \"a\"\nvalues = [1]\nP = \"a\"\nvalues = [1]\n", ":9",
     "path \"a\" in [[parameter]] is that of line 6 already"},
    {"NameTwice", "GRIDP = \"a\"\nname = \"n\"\nvalues = [1]\nP = \"b\"\nname = \"n\"\nvalues = [1]\n", ":11",
     "name \"n\" in [[parameter]] is that of line 6 already"},
    {"NoValues", "GRIDP = \"a\"\n", ":5", "[[parameter]] has no values; give values = [..], or from, to and count"},
    {"EmptyValues", "GRIDP = \"a\"\nvalues = []\n", ":7", "is an empty list"},
    {"ValuesNotAList", "GRIDP = \"a\"\nvalues = 3\n", ":7", "needs values = [..], a list"},
    {"ValueTwice", "GRIDP = \"a\"\nvalues = [1, 1]\n", ":7", "has 1 twice"},
    {"ValueNotFinite", "GRIDP = \"a\"\nvalues = [1, nan]\n", ":7", "at line 7, column 14"},
    {"ValueWithQuote", "GRIDP = \"a\"\nvalues = ['\"']\n", ":7", "a text without quotes"},
    {"ValuesAndFrom", "GRIDP = \"a\"\nvalues = [1]\nfrom = 3\n", ":8", "unknown key \"from\""},
    {"FromWithoutTo", "GRIDP = \"a\"\nfrom = 3\ncount = 3\n", ":5", "[[parameter]] has no key to"},
    {"FromWithoutCount", "GRIDP = \"a\"\nfrom = 3\nto = 4\n", ":5", "[[parameter]] has no key count"},
    {"CountOfOne", "GRIDP = \"a\"\nfrom = 3\nto = 4\ncount = 1\n", ":9", "count in [[parameter]] "},
    {"FromIsTo", "GRIDP = \"a\"\nfrom = 3\nto = 3\ncount = 2\n", ":8", "are both 3; they must differ"},
    {"UnknownScale", "GRIDP = \"a\"\nfrom = 3\nto = 4\ncount = 2\nscale = \"dB\"\n", ":10", "\"linear\" or \"log\""},
    {"LogFromZero", "GRIDP = \"a\"\nfrom = 0\nto = 4\ncount = 2\nscale = \"log\"\n", ":7",
     "from in [[parameter]] is 0; a logarithmic scale needs a number above 0"},
    {"GridWithDistribution", "GRIDP = \"a\"\ndistribution = \"uniform\"\n", ":7", "goes with method = \"random\""},
    {"RandomWithoutDistribution", "RANDOMP = \"a\"\nvalues = [1]\n", ":5", "[[parameter]] has no key distribution"},
    {"UnknownDistribution", "RANDOMP = \"a\"\ndistribution = \"flat\"\n", ":7",
     "it must be one of uniform, log-uniform, normal, choice"},
    {"UniformWithoutMinimum", "RANDOMP = \"a\"\ndistribution = \"uniform\"\nmaximum = 1\n", ":5", "has no key minimum"},
    {"UniformUpsideDown", "RANDOMP = \"a\"\ndistribution = \"uniform\"\nminimum = 2\nmaximum = 1\n", ":9",
     "maximum in [[parameter]] is 1; it must be greater than minimum, 2"},
    {"LogUniformFromZero", "RANDOMP = \"a\"\ndistribution = \"log-uniform\"\nminimum = 0\nmaximum = 1\n", ":8",
     "log-uniform needs a number above 0"},
    {"IntegerWithFraction", "RANDOMP = \"a\"\ndistribution = \"uniform\"\ninteger = true\nminimum = 0.5\nmaximum = 3\n",
     ":9", "with integer = true it must be a whole number"},
    {"NormalWithoutDeviation", "RANDOMP = \"a\"\ndistribution = \"normal\"\nmean = 1\n", ":5", "has no key deviation"},
    {"NormalWithoutSpread", "RANDOMP = \"a\"\ndistribution = \"normal\"\nmean = 1\ndeviation = 0\n", ":9",
     "deviation in [[parameter]] is 0; it must be greater than 0"},
    {"ChoiceWithBounds", "RANDOMP = \"a\"\ndistribution = \"choice\"\nvalues = [1]\nminimum = 0\n", ":9",
     "unknown key \"minimum\""},
    {"TooManyRuns",
     "GRIDP = \"a\"\nfrom = 0\nto = 1\ncount = 10000\nP = \"b\"\nfrom = 0\nto = 1\ncount = 10000\nP = \"c\"\nvalues = "
     "[1, 2]\n",
     ":1", "has more than 100000000 runs"},
};

std::string complete(std::string sText)
{
    const auto replaceAll = [&sText](const std::string& sOld, const std::string& sNew) {
        for (std::size_t n = 0; (n = sText.find(sOld, n)) != std::string::npos; n += sNew.size()) {
            sText.replace(n, sOld.size(), sNew);
        }
    };
    replaceAll("GRID", "[sweep]\nscenario = \"s\"\nmethod = \"grid\"\n\n");
    replaceAll("RANDOM", "[sweep]\nscenario = \"s\"\nmethod = \"random\"\nruns = 9\n");
    replaceAll("P = ", "[[parameter]]\npath = ");
    return sText;
}

class SweepError : public testing::TestWithParam<BadSweep>
{
};

void PrintTo(const BadSweep& sweep, std::ostream* pStream)
{
    *pStream << sweep.pWhat;
}
} // namespace

TEST_P(SweepError, NamesThePlaceAndWhatIsAllowed)
{
    try {
        (void)parseSweepDefinition(complete(GetParam().pText), "x/sweep.toml");
        FAIL() << "was taken";
    }
    catch (const ConfigurationError& error) {
        EXPECT_THAT(error.what(), StartsWith(std::string("x/sweep.toml") + GetParam().pPlace + ":"));
        EXPECT_THAT(error.what(), HasSubstr(GetParam().pError));
        EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
    }
}

INSTANTIATE_TEST_SUITE_P(All, SweepError, testing::ValuesIn(BAD_SWEEPS),
                         [](const auto& information) { return std::string(information.param.pWhat); });

TEST(SweepErrorTest, AFileThatIsNotThereIsNamed)
{
    EXPECT_THROW((void)loadSweepDefinition("/nowhere/sweep.toml"), ConfigurationError);
    EXPECT_THROW((void)loadSweepDefinition("/tmp"), ConfigurationError);
}

TEST(SweepErrorTest, AKeyOfVeryManyPartsDoesNotEndTheStack)
{
    std::string sText = "[sweep]\na";
    for (int nPart = 0; nPart < 300'000; ++nPart) {
        sText += ".a";
    }
    try {
        (void)parseSweepDefinition(sText, "x/sweep.toml");
        FAIL() << "was taken";
    }
    catch (const ConfigurationError& error) {
        EXPECT_THAT(error.what(), StartsWith("x/sweep.toml:2: a key has more than 32 parts"));
    }
}

TEST(SweepErrorTest, ADeviceIsNoSweep)
{
    EXPECT_THROW((void)loadSweepDefinition("/dev/zero"), ConfigurationError);
}

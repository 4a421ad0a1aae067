#include "benchmarks/test_interface/load/SampleFile.h"

#include <fstream>
#include <stdexcept>

std::vector<Sample> readSamples(const std::string& sPath)
{
    std::ifstream file(sPath);
    std::vector<Sample> samples;
    for (Sample sample{}; file >> sample[0] >> sample[1] >> sample[2] >> sample[3] >> sample[4];) {
        samples.push_back(sample);
    }
    if (samples.empty() || !file.eof()) {
        throw std::runtime_error(sPath + ": not lines of five integers");
    }
    return samples;
}

#include "Simulation/Transmitter/AmplifierFit.h"

#include "Simulation/Transmitter/RappAmplifier.h"

#include <cminpack.h>

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>

namespace
{
constexpr int PARAMETER_COUNT = 3;
constexpr int MAX_EVALUATIONS = 2000;
constexpr double STEP_BOUND = 1.0; // of the first step; far ones lose themselves where nothing compresses

// Below either the saturated power is a guess: a softer amplifier with more of it gives the same points.
constexpr double LEAST_COMPRESSION_DB = 0.5;
constexpr double LARGEST_SATURATION_ERROR_DB = 0.5;

/** Beyond it the output bends within a hundredth of a dB: points do not tell one value from another. */
constexpr double MOST_ABRUPT_P = 200.0;

/** Where the parameters stand in the solver's vector. The logarithm of p keeps it positive. */
enum EParameter
{
    eGAIN,
    eSATURATED,
    eLOG_P
};

using Parameters = std::array<double, PARAMETER_COUNT>;

/** A solution, and how surely the points tell it. */
struct Solution
{
    Parameters values{};
    double sumOfSquares = std::numeric_limits<double>::infinity();
    double saturatedErrorDb = std::numeric_limits<double>::infinity(); /**< standard error */
    bool bConverged = false;
};

double modelDbm(const double* pValues, double inputDbm)
{
    return rappOutputDbm(inputDbm + pValues[eGAIN], pValues[eSATURATED], std::exp(pValues[eLOG_P]));
}

/** Called by the solver. */
int residuals(void* pPoints, int /*nPoints*/, int /*nParameters*/, const double* pValues, double* pResiduals,
              int /*nFlag*/)
{
    for (const AmplifierPoint& point : *static_cast<const std::vector<AmplifierPoint>*>(pPoints)) {
        *pResiduals++ = point.outputDbm - modelDbm(pValues, point.inputDbm);
    }
    return 0;
}

std::string text(double value)
{
    std::array<char, 64> text{};
    const int nLength = std::snprintf(text.data(), text.size(), "%.2f", value);
    return std::string(text.data(), static_cast<std::size_t>(nLength));
}

void checkPoints(const std::vector<AmplifierPoint>& points)
{
    if (points.size() < LEAST_AMPLIFIER_POINTS) {
        throw AmplifierFitError("has " + std::to_string(points.size()) + " points; at least " +
                                std::to_string(LEAST_AMPLIFIER_POINTS) + " are needed");
    }
    for (const AmplifierPoint& point : points) {
        if (!std::isfinite(point.inputDbm) || !std::isfinite(point.outputDbm)) {
            throw AmplifierFitError("holds a power that is not finite");
        }
    }
}

/** @return where the solver starts: the gain of the weakest quarter, saturation just above the strongest output */
Parameters startingValues(std::vector<AmplifierPoint> points, double p)
{
    std::sort(points.begin(), points.end(),
              [](const AmplifierPoint& a, const AmplifierPoint& b) { return a.inputDbm < b.inputDbm; });
    std::vector<double> gains;
    double strongestDbm = points.front().outputDbm;
    for (const AmplifierPoint& point : points) {
        if (gains.size() * 4 < points.size()) {
            gains.push_back(point.outputDbm - point.inputDbm);
        }
        strongestDbm = std::max(strongestDbm, point.outputDbm);
    }
    const auto middle = gains.begin() + static_cast<std::ptrdiff_t>(gains.size() / 2);
    std::nth_element(gains.begin(), middle, gains.end());
    return {*middle, strongestDbm + 0.1, std::log(p)};
}

/** @return the standard error of the saturated power; infinite when the points do not tell it */
double saturatedError(const Solution& solution, int nPoints, std::vector<double>& jacobian,
                      const std::array<int, PARAMETER_COUNT>& pivots)
{
    Parameters work{};
    // Makes the parameters' covariance of the solver's factors; not 0 when some parameters make up for each other.
    const int nDeficient = covar1(nPoints, PARAMETER_COUNT, solution.sumOfSquares, jacobian.data(), nPoints,
                                  pivots.data(), std::sqrt(DBL_EPSILON), work.data());
    const double variance = jacobian[static_cast<std::size_t>(eSATURATED) * static_cast<std::size_t>(nPoints + 1)];
    return nDeficient == 0 && variance >= 0.0 ? std::sqrt(variance) : std::numeric_limits<double>::infinity();
}

Solution solve(const std::vector<AmplifierPoint>& points, const Parameters& start)
{
    const auto nPoints = static_cast<int>(points.size());
    std::vector<double> differences(points.size());
    std::vector<double> jacobian(points.size() * PARAMETER_COUNT);
    std::vector<double> pointWork(points.size());
    std::array<int, PARAMETER_COUNT> pivots{};
    Parameters scales{};
    Parameters projection{};
    std::array<Parameters, 3> work{};
    int nEvaluations = 0;

    Solution solution;
    solution.values = start;
    auto measured = points; // the solver's argument is not const
    const double tolerance = std::sqrt(DBL_EPSILON);
    const int nInfo = lmdif(residuals, &measured, nPoints, PARAMETER_COUNT, solution.values.data(), differences.data(),
                            tolerance, tolerance, 0.0, MAX_EVALUATIONS, 0.0, scales.data(), 1, STEP_BOUND, 0,
                            &nEvaluations, jacobian.data(), nPoints, pivots.data(), projection.data(), work[0].data(),
                            work[1].data(), work[2].data(), pointWork.data());
    const double norm = enorm(nPoints, differences.data());
    solution.sumOfSquares = norm * norm;
    // 1 to 4 are the solver's four tests of convergence; 6 to 8 say that no computer could come nearer.
    solution.bConverged = nInfo >= 1 && nInfo != 5 && std::isfinite(norm);
    if (solution.bConverged) {
        solution.saturatedErrorDb = saturatedError(solution, nPoints, jacobian, pivots);
    }
    return solution;
}

/** @return the best of several starts: from far off, a soft and an abrupt amplifier look alike */
Solution solveFromSeveralStarts(const std::vector<AmplifierPoint>& points)
{
    Solution best;
    for (const double p : {1.0, 3.0, 10.0}) {
        const Solution solution = solve(points, startingValues(points, p));
        if (solution.sumOfSquares < best.sumOfSquares) {
            best = solution;
        }
    }
    return best;
}

/** @return how much more the curve compresses at the strongest point than at the weakest; a very soft one does anywhere
 */
double compressionOver(const std::vector<AmplifierPoint>& points, const Parameters& values)
{
    const auto [weakest, strongest] =
        std::minmax_element(points.begin(), points.end(),
                            [](const AmplifierPoint& a, const AmplifierPoint& b) { return a.inputDbm < b.inputDbm; });
    const auto compressionAt = [&values](double inputDbm) {
        return inputDbm + values[eGAIN] - modelDbm(values.data(), inputDbm);
    };
    return compressionAt(strongest->inputDbm) - compressionAt(weakest->inputDbm);
}

void checkSolution(const std::vector<AmplifierPoint>& points, const Solution& solution)
{
    const double compressionDb = compressionOver(points, solution.values);
    // First: without compression the saturated power runs away, and the solver with it.
    if (std::isfinite(solution.sumOfSquares) && compressionDb < LEAST_COMPRESSION_DB) {
        throw AmplifierFitError("compresses by " + text(compressionDb) + " dB only, which leaves the saturated power " +
                                "open; measure on until it has compressed by 1 dB or more");
    }
    if (!solution.bConverged) {
        throw AmplifierFitError("is not followed by any amplifier of this kind: the fit does not converge");
    }
    if (solution.saturatedErrorDb > LARGEST_SATURATION_ERROR_DB) {
        throw AmplifierFitError("leaves the saturated power open (standard error " +
                                (std::isfinite(solution.saturatedErrorDb) ? text(solution.saturatedErrorDb) + " dB"
                                                                          : std::string("without limit")) +
                                "); measure more points where it compresses");
    }
    if (solution.values[eLOG_P] > std::log(MOST_ABRUPT_P)) {
        throw AmplifierFitError("bends too abruptly to tell how: measure in smaller steps where it begins to compress");
    }
}

/** @return the output power that lies 1 dB below what the gain alone would make */
double oneDecibelPointDbm(double saturatedDbm, double p)
{
    return saturatedDbm + 10.0 / p * std::log10(std::pow(10.0, p / 10.0) - 1.0) - 1.0;
}
} // namespace

AmplifierFit fitAmplifier(const std::vector<AmplifierPoint>& points)
{
    checkPoints(points);
    const Solution solution = solveFromSeveralStarts(points);
    checkSolution(points, solution);

    AmplifierFit fit{};
    fit.gainDb = solution.values[eGAIN];
    fit.saturatedDbm = solution.values[eSATURATED];
    fit.rappP = std::exp(solution.values[eLOG_P]);
    fit.compressedDbm = oneDecibelPointDbm(fit.saturatedDbm, fit.rappP);
    fit.rmsResidualDb = std::sqrt(solution.sumOfSquares / static_cast<double>(points.size()));
    for (const AmplifierPoint& point : points) {
        fit.maxResidualDb =
            std::max(fit.maxResidualDb, std::abs(point.outputDbm - modelDbm(solution.values.data(), point.inputDbm)));
    }
    return fit;
}

/** @file
 * The files that a run in virtual time leaves.
 */
#pragma once

#include "Unit/CommandLine/SimulateCommand.h"
#include "Unit/Files/NewFile.h"
#include "Unit/Simulator/RunReport.h"
#include "Unit/Simulator/RunTrack.h"
#include "Unit/Simulator/StepCsv.h"

#include <memory>
#include <string>
#include <vector>

/** Opens the files before the run, takes its steps, and gives the files their names when all of them are complete. */
class SimulateOutputs final : public IStepReceiver
{
public:
    /**
     * @throws ConfigurationError when a file cannot be made, or is named twice
     * @throws std::runtime_error when a picture is wanted that cannot be drawn
     */
    explicit SimulateOutputs(const SimulateOptions& options);

    void onStep(const VirtualStep& step) override;

    /** @return whom to tell of steps; null when nobody wants them */
    IStepReceiver* receiver() { return m_pCsv || m_pTrack ? this : nullptr; }

    /** Writes what is left and gives the files their names. @param report gets to know what was written */
    void finish(RunReport& report, const std::string& sScenarioText);

private:
    void drawPlots(RunReport& report);

    std::unique_ptr<StepCsv> m_pCsv;
    std::unique_ptr<RunTrack> m_pTrack;
    std::vector<std::unique_ptr<NewFile>> m_plots;
    std::unique_ptr<NewFile> m_pPage;
};

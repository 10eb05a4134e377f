#include "app/MainDialog.h"

#include "app/WaveCheck.h"

// The worker is not asked for a stop: a run always goes to its end.
void MainDialog::RunCheck(WorkerThread*)
{
    RunWaveCheck(wavePath, report, reportHasError);
}

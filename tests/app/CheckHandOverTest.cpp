#include "app/MainDialog.h"
#include "app/WorkerThread.h"
#include "platform/Thread.h"
#include "support/RiffBytes.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

// The report belongs to the worker while it runs and to the main thread once
// IsRunning has said false: the lock of the worker is the only thing that
// orders the two. Run under ThreadSanitizer, this shows the hand-over sound.
TEST(CheckHandOver, ReportPassesToTheMainThreadWhenTheWorkerEnds)
{
    TempDir dir;
    const WideString sound = dir.Write("sound.wav", SoundWave());
    const WideString broken = dir.Write("broken.wav", Riff(RiffBytes().Chunk("fmt ", FormatBody(3, 6, 0, 32)).Bytes()));
    MainDialog dialog;
    for (int round = 0; round < 20; ++round) {
        const bool soundRound = round % 2 == 0;
        dialog.SetWavePath(soundRound ? sound : broken);
        auto* worker = new WorkerThread(&dialog, &MainDialog::RunCheck);
        while (worker->IsRunning())
            platform::SleepMilliseconds(1);
        EXPECT_EQ(dialog.ReportHasError(), !soundRound);
        EXPECT_EQ(dialog.GetReport().StartsWith(u"チェック完了しました。"), soundRound);
        worker->StopAndDestroy();
    }
}

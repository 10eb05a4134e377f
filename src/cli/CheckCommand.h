#pragma once

// The command-line checker beside the window, for batches and scripts:
//   sondara-check [--json | --jsonl | --csv] [--strict] [-j N] FILE...
//   sondara-check [--json] [--chunks | --levels] FILE...
//   sondara-check [--json] --tidy OUT FILE
// Its entry is ConsoleMain (platform/Console.h). It runs the window's check
// on each file; --help says what each option does and what the exit status
// means.

#pragma once

#include "app/ExceptionProcessor2Error.h"
#include "base/WideString.h"

// The English texts of the failure box: what a caught value means, and what
// the system knows about the failure.
WideString ErrorText(Exception::ExceptionProcessor2Error value);
WideString SystemErrorText();

#pragma once

/// How much of a preview is made; each includes those before it.
enum class PreviewDepth {
    records,  ///< what can be undone and put back; the folder is not looked at, and the phase is `ready` only where it
              ///< has been before
    files,    ///< the files of the folder, and an empty plan
    plan,     ///< where each of them would go
};

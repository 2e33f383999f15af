#pragma once

namespace nivora::cs {

/// True once the engines are taking their own statics apart at the end of the process: from then on their
/// objects cannot be destroyed any more. \p object is then kept reachable, so that no leak is reported.
bool isKeptAtProcessEnd(void *object);

} // namespace nivora::cs

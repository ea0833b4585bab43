// Replaced as the framework lands.

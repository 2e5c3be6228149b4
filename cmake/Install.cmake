# Filled in together with the package configuration files.

# Sourced by the scripts here: where Debian packages for sysroots and fresh roots come from.

# The archive that this machine installs from, suite bookworm, main alone: beside the other suites'
# newer packages apt finds no set of versions that fits another processor.
archive_source() {
    archive_uri=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' \
        'Codename: bookworm' 'Label: Debian' 'Component: main' | head -n 1)
    if [ -z "$archive_uri" ]; then
        echo "apt knows no archive of Debian bookworm main: see /etc/apt, run apt-get update" >&2
        return 1
    fi
    echo "deb $archive_uri bookworm main"
}

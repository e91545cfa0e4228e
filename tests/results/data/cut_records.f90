! Compiled for subrecords of at most 16 bytes: integers 1, 2, ..., n in records of 0, 12, 16, 20,
! 32, 36 and 48 bytes, and one of three items that do not end where the subrecords do.
program cut_records
    implicit none
    integer :: i, m
    integer, parameter :: n(7) = [0, 3, 4, 5, 8, 9, 12]

    open (10, file='cut_records.bin', form='unformatted', status='replace')
    do m = 1, 7
        write (10) (i, i=1, n(m))
    end do
    write (10) [1, 2, 3], 0.5, [4, 5, 6]
    close (10)
end program cut_records
